#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "virtual_head/scene/Geometry.h"

namespace Korvex3Sync::virtual_head::scene {

/// The sets of laser lines that a pixel belongs to, as bits.
enum LineSet : std::uint8_t { kFirstSet = 1, kSecondSet = 2, kMiddleLine = 4 };

/// The brightness of a set of lines in a direction.
struct LineLight {
    float level = 0;  // 0 to 1
    std::uint8_t sets = 0;
};

/// The pattern of the structured lights in a direction, which is given by the slopes of the
/// projector.
class Patterns {
public:
    static constexpr int kProjected = 2;  // PROJECTTYPE 1 and 2

    /// `pixelSize`: the size of a pixel on the plate, in millimetres. Lines are never so thin that
    /// they fall between two pixels.
    Patterns(const SceneDescription& scene, float pixelSize);

    LineLight FirstLines(float u, float v) const { return Lines(u, v, m_sine, kFirstSet); }
    LineLight SecondLines(float u, float v) const { return Lines(u, v, -m_sine, kSecondSet); }
    /// Whether the projector's picture covers this direction.
    static bool InPicture(float u, float v);
    /// `type` 0: random dots, 1: upright stripes. 0 to 1.
    float Projected(int type, float u, float v) const;
    /// Speckle, 0 to 1.
    float Infrared(float u, float v) const;

private:
    using Tile = std::vector<std::uint8_t>;

    LineLight Lines(float u, float v, float sine, LineSet set) const;

    float m_reach;
    float m_cosine;
    float m_sine;
    float m_spacing;  // as a slope
    float m_perSpacing;
    float m_perSigma;  // standard deviations in a slope of 1
    int m_lines;
    // The same for all scenes: created once and never destroyed.
    const Tile& m_dots;
    const Tile& m_stripes;
    const Tile& m_speckle;
};

}  // namespace Korvex3Sync::virtual_head::scene
