#pragma once

#include <array>
#include <cstdint>

#include "virtual_head/cameras/Exposure.h"

namespace Korvex3Sync::virtual_head::scene {

/// How strongly a sensor sees each light, in 1/256. 65535 and above all mean white.
struct Weights {
    std::uint16_t strobe = 0;
    std::uint16_t projected = 0;
    std::uint16_t infrared = 0;
    std::uint16_t lines = 0;

    bool operator==(const Weights&) const = default;
};

/// Everything that can differ between two frames of the same pose.
struct Lighting {
    std::array<Weights, 2> sensors;  // left, right
    std::uint8_t lineSets = 0;       // LineSet bits that are lit
    int projected = 0;               // the visible pattern, from 0

    bool operator==(const Lighting&) const = default;
};

/// The light of an exposure, according to the model in docs/virtual-head.md. A light that is off
/// has weight 0; its pattern does not matter.
Lighting LightingOf(const Exposure& exposure);

}  // namespace Korvex3Sync::virtual_head::scene
