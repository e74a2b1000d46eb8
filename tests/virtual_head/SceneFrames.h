#pragma once

#include <cstdint>
#include <memory>
#include <numeric>
#include <vector>

#include "virtual_head/Unpacked.h"
#include "virtual_head/images/ImageSource.h"

namespace Korvex3Sync::tests {

/// Frames of a scene, without a head around it.
class SceneFrames {
public:
    explicit SceneFrames(const virtual_head::HeadDescription& description)
        : m_pixels(static_cast<std::size_t>(description.width) *
                   static_cast<std::size_t>(description.height)),
          m_source(virtual_head::MakeScene(description)) {}

    Unpacked Frame(const virtual_head::Exposure& exposure) const {
        std::vector<std::uint8_t> packed(2 * m_pixels);
        m_source->WritePacked(exposure, packed.data());
        return Unpack(packed.data(), m_pixels);
    }
    virtual_head::ImageSource& Source() const { return *m_source; }

private:
    const std::size_t m_pixels;
    const std::shared_ptr<virtual_head::ImageSource> m_source;
};

/// Mean grey level of an image, without its first group, where the key and the marker stand.
inline double Mean(const std::vector<std::uint8_t>& image) {
    return std::accumulate(image.begin() + 4, image.end(), 0.0) /
           static_cast<double>(image.size() - 4);
}

}  // namespace Korvex3Sync::tests
