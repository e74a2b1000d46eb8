#include "virtual_head/scene/Patterns.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>

namespace Korvex3Sync::virtual_head::scene {
namespace {

// The slopes up to which lines and picture extend, on each side.
constexpr float kLineEnd = 0.36F;
constexpr float kFarAcross = 20;  // beyond any line
constexpr float kPictureU = 0.40F;
constexpr float kPictureV = 0.31F;
// In millimetres at the plate.
constexpr float kStripe = 8;
constexpr float kDotCell = 5;
constexpr float kSpeckleCell = 1.6F;
constexpr float kThinnest = 0.9F;        // standard deviation of a line, in pixels
constexpr float kWidthToSigma = 2.355F;  // full width at half maximum / standard deviation
constexpr float kCutOff = 3.3F;          // in standard deviations; beyond, a line is not visible

constexpr int kTile = 512;
constexpr int kCell = 16;  // pixels of a tile per cell, in each direction
constexpr int kCells = kTile / kCell;

std::size_t Place(int x, int y) {
    const auto column = static_cast<unsigned>(x) & (kTile - 1U);
    const auto row = static_cast<unsigned>(y) & (kTile - 1U);
    return std::size_t{row} * kTile + column;
}

float Byte(float value) {
    return std::clamp(value, 0.0F, 1.0F) * 255;
}

/// Round dots of three sizes, at most one per cell, at a random position.
std::vector<std::uint8_t> Dots() {
    std::vector<std::uint8_t> tile(std::size_t{kTile} * kTile);
    std::minstd_rand random(1);
    for (int cell = 0; cell < kCells * kCells; ++cell) {
        const auto pick = static_cast<unsigned>(random() >> 4U);
        if (pick % 4 == 0) {
            continue;
        }
        const float radius = 3.2F + 1.4F * static_cast<float>(pick % 4);
        const int x = cell % kCells * kCell + static_cast<int>(pick >> 4U) % kCell;
        const int y = cell / kCells * kCell + static_cast<int>(pick >> 12U) % kCell;
        for (int down = -kCell / 2; down < kCell / 2; ++down) {
            for (int right = -kCell / 2; right < kCell / 2; ++right) {
                const float off = std::hypot(static_cast<float>(right), static_cast<float>(down));
                auto& place = tile[Place(x + right, y + down)];
                const auto level = static_cast<std::uint8_t>(Byte((radius - off) / 2 + 0.5F));
                place = std::max(place, level);
            }
        }
    }
    return tile;
}

/// Random levels, one per quarter of a cell, interpolated.
std::vector<std::uint8_t> Speckle() {
    std::vector<std::uint8_t> tile(std::size_t{kTile} * kTile);
    std::minstd_rand random(2);
    constexpr int kGrid = kTile / kCell;
    std::vector<float> grid(std::size_t{kGrid} * kGrid);
    for (float& level : grid) {
        const float even = static_cast<float>(random() % 1000) / 999;
        level = even * even;  // more dark than bright areas
    }
    const auto at = [&grid](int x, int y) {
        const auto column = static_cast<std::size_t>(x % kGrid);
        return grid[static_cast<std::size_t>(y % kGrid) * kGrid + column];
    };
    for (int y = 0; y < kTile; ++y) {
        for (int x = 0; x < kTile; ++x) {
            const float right = static_cast<float>(x % kCell) / kCell;
            const float down = static_cast<float>(y % kCell) / kCell;
            const int column = x / kCell;
            const int row = y / kCell;
            const float above = at(column, row) * (1 - right) + at(column + 1, row) * right;
            const float below = at(column, row + 1) * (1 - right) + at(column + 1, row + 1) * right;
            tile[Place(x, y)] = static_cast<std::uint8_t>(Byte(above * (1 - down) + below * down));
        }
    }
    return tile;
}

/// Vertical stripes, each one cell wide.
std::vector<std::uint8_t> Stripes() {
    std::vector<std::uint8_t> tile(std::size_t{kTile} * kTile);
    for (int y = 0; y < kTile; ++y) {
        for (int x = 0; x < kTile; ++x) {
            const float phase = static_cast<float>(x % kCell) / kCell;
            tile[Place(x, y)] = static_cast<std::uint8_t>(
                Byte(0.5F + 0.5F * std::cos(phase * 2 * std::numbers::pi_v<float>)));
        }
    }
    return tile;
}

template <std::vector<std::uint8_t> (*Make)()>
const std::vector<std::uint8_t>& Once() {
    static const auto* const tile = new std::vector<std::uint8_t>(Make());
    return *tile;
}

/// Looks up the repeated tile. `perCell`: pixels of the tile for a slope of 1.
float Look(const std::vector<std::uint8_t>& tile, float u, float v, float perCell) {
    const int x = Floor(u * perCell);
    const int y = Floor(v * perCell);
    return static_cast<float>(tile[Place(x, y)]) / 255;
}

}  // namespace

Patterns::Patterns(const SceneDescription& scene, float pixelSize)
    : m_reach(MakeProjector(scene).reach),
      m_cosine(std::cos(static_cast<float>(scene.laserAngle * std::numbers::pi / 180))),
      m_sine(std::sin(static_cast<float>(scene.laserAngle * std::numbers::pi / 180))),
      m_spacing(static_cast<float>(scene.laserSpacing) / m_reach),
      m_perSpacing(1 / m_spacing),
      m_perSigma(m_reach / std::max(static_cast<float>(scene.laserWidth) / kWidthToSigma,
                                    kThinnest * pixelSize)),
      m_lines(scene.laserLines),
      m_dots(Once<Dots>()),
      m_stripes(Once<Stripes>()),
      m_speckle(Once<Speckle>()) {}

LineLight Patterns::Lines(float u, float v, float sine, LineSet set) const {
    const float across = u * m_cosine + v * sine;
    const float along = v * m_cosine - u * sine;
    if (std::abs(along) > kLineEnd || std::abs(across) > kFarAcross) {
        return {};
    }
    const float first = -static_cast<float>(m_lines - 1) / 2;
    const int line = std::clamp(Floor(across * m_perSpacing - first + 0.5F), 0, m_lines - 1);
    const float off = (across - (static_cast<float>(line) + first) * m_spacing) * m_perSigma;
    if (std::abs(off) > kCutOff) {
        return {};
    }
    const bool middle = set == kFirstSet && line == m_lines / 2;
    return {std::exp(-off * off / 2), static_cast<std::uint8_t>(set | (middle ? kMiddleLine : 0))};
}

bool Patterns::InPicture(float u, float v) {
    return std::abs(u) < kPictureU && std::abs(v) < kPictureV;
}

float Patterns::Projected(int type, float u, float v) const {
    if (type == 0) {
        return Look(m_dots, u, v, m_reach * (kCell / kDotCell));
    }
    return Look(m_stripes, u, v, m_reach * (kCell / kStripe));
}

float Patterns::Infrared(float u, float v) const {
    return Look(m_speckle, u, v, m_reach * (kCell / kSpeckleCell));
}

}  // namespace Korvex3Sync::virtual_head::scene
