#pragma once

#include "virtual_head/scene/Brightness.h"
#include "virtual_head/scene/View.h"

namespace Korvex3Sync::virtual_head::scene {

/// The grey level of a sensor without light.
inline constexpr int kBlackLevel = 2;

/// Adds up the lights of a view to the image of a sensor in a mono frame.
void ComposeMono(const View& view, const Weights& weights, const Lighting& lighting,
                 std::uint8_t* image);
/// The same for the mosaic of a colour frame.
void ComposeColor(const View& view, const Weights& weights, std::uint8_t* mosaic);

}  // namespace Korvex3Sync::virtual_head::scene
