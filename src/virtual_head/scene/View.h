#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "virtual_head/scene/Patterns.h"
#include "virtual_head/scene/Surface.h"

namespace Korvex3Sync::virtual_head::scene {

/// The brightness of each pixel under each light at power 1, as a byte. kWhite is a white surface
/// at the distance of the plate that faces sensor and light.
inline constexpr int kWhite = 160;

/// One pixel that a laser line lights.
struct LinePixel {
    std::uint32_t index;
    std::uint8_t level;
    std::uint8_t sets;  // LineSet bits
};

/// What one sensor sees of the object in one pose, separately for each light.
struct View {
    using Bytes = std::vector<std::uint8_t>;

    Bytes strobe;
    Bytes mosaic;  // strobe light through the RGGB mosaic; empty without colour
    std::array<Bytes, Patterns::kProjected> projected;
    Bytes infrared;
    std::vector<LinePixel> lines;
};

/// Allocates the bytes of a view; throws std::bad_alloc.
void Allocate(const HeadDescription& description, bool mosaic, View& view);

/// Draws views. Thread-safe for different views.
class Painter {
public:
    explicit Painter(const HeadDescription& description);
    void Draw(int sensor, int pose, View& view) const;

private:
    struct Sight;
    void DrawRow(const Sight& sight, int row, View& view) const;
    void DrawStructured(const Sight& sight, const Hit& hit, float grey, std::size_t index,
                        View& view) const;

    const HeadDescription m_description;
    const Object m_object;
    const Projector m_projector;
    const Patterns m_patterns;
};

}  // namespace Korvex3Sync::virtual_head::scene
