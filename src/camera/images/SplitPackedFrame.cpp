#include "camera/images/SplitPackedFrame.h"

#include <new>
#include <utility>

#include "camera/ColorMode.h"
#include "camera/images/PackedPixels.h"
#include "platform/include/PackedFrameLayout.h"

namespace Korvex3Sync {
namespace {

constexpr std::size_t kMostImages = 2;

/// Reserves space in every list for the images of a frame; false if memory runs out.
template <class... Lists>
bool MakeRoom(Lists&... lists) {
    try {
        (lists.reserve(kMostImages), ...);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

}  // namespace

void SplitFrame::Clear() {
    images.clear();
    widths.clear();
    heights.clear();
    channels.clear();
}

bool SplitPackedFrame(SplitFrame& frame, const unsigned char* data, int width, int height,
                      ImagePool& pool) {
    if (data == nullptr || width <= 0 || height <= 0 ||
        !MakeRoom(frame.images, frame.widths, frame.heights, frame.channels)) {
        return false;
    }
    const std::size_t pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const bool color = 2 * pixels >= hardware::kMarkerEnd && hardware::CarriesColorMarker(data);
    Image first = color ? Image() : pool.Take(pixels);
    Image second = pool.Take(pixels);
    if (!second || (!color && !first)) {
        return false;
    }
    SplitPackedPixels(data, pixels, first.Pixels(), second.Pixels());

    const auto append = [&](Image& image, int format) {
        frame.images.push_back(std::move(image));
        frame.widths.push_back(width);
        frame.heights.push_back(height);
        frame.channels.push_back(SplitChannels(format));
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
