#include <new>

#include "camera/ColorMode.h"
#include "camera/PackedFrameSplit.h"
#include "camera/PhysicalCameraThread.h"

namespace Korvex3Sync {
namespace {

constexpr std::size_t kMarkerBytes = 12;
constexpr std::size_t kMostImages = 2;

/// Room in every list for the images of a frame; false without memory.
template <class... Lists>
bool MakeRoom(Lists&... lists) {
    try {
        (lists.reserve(lists.size() + kMostImages), ...);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace

bool CPhysicalCameraThread::SplitPackedFrame(std::vector<unsigned char*>& images,
                                             std::vector<int>& widths, std::vector<int>& heights,
                                             std::vector<int>& channels, const unsigned char* data,
                                             ImagePool& pool) const {
    if (m_camera == nullptr || data == nullptr || m_width <= 0 || m_height <= 0 ||
        !MakeRoom(images, widths, heights, channels)) {
        return false;
    }
    const std::size_t pixels =
        static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height);
    const bool color = 2 * pixels >= kMarkerBytes && HasColorMarker(data);
    unsigned char* const first = color ? nullptr : pool.Take(pixels);
    unsigned char* const second = pool.Take(pixels);
    if (second == nullptr || (!color && first == nullptr)) {
        pool.Release(first);
        pool.Release(second);
        return false;
    }
    SplitPackedPixels(data, pixels, first, second);

    const auto append = [&](unsigned char* image, int format) {
        images.push_back(image);
        widths.push_back(m_width);
        heights.push_back(m_height);
        channels.push_back(SplitChannels(format));
    };
    if (color) {
        append(second, kBayerFormat);
    } else {
        append(first, kMonoFormat);
        append(second, kMonoFormat);
    }
    return true;
}

}  // namespace Korvex3Sync
