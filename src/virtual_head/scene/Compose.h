#pragma once

#include "virtual_head/scene/Brightness.h"
#include "virtual_head/scene/View.h"

namespace Korvex3Sync::virtual_head::scene {

/// What a sensor gives without light, in grey levels.
inline constexpr int kBlackLevel = 2;

/// Adds the lights of a view up to what the sensor sees in a mono frame.
void ComposeMono(const View& view, const Weights& weights, const Lighting& lighting,
                 std::uint8_t* image);
/// The same for the mosaic of a colour frame.
void ComposeColor(const View& view, const Weights& weights, std::uint8_t* mosaic);

}  // namespace Korvex3Sync::virtual_head::scene
