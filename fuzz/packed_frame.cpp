// The packed-frame split beside a plain loop, on frames of any size: of bytes, and of a camera.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "camera/images/PackedPixels.h"
#include "camera/images/SplitPackedFrame.h"
#include "platform/include/PackedFrameLayout.h"

namespace {

using Pixels = std::vector<unsigned char>;

constexpr std::size_t kGroup = 4;
constexpr std::size_t kMarkerBytes = 12;
/// The heights that a frame's number of pixels is divided by, the first one that fits.
constexpr std::size_t kHeights[] = {8, 4, 3, 2, 1};

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// What the split of `packed` has to be; `start` is the image's place in each 8 bytes.
Pixels Expected(const Pixels& packed, std::size_t start) {
    const std::size_t pixels = packed.size() / 2;
    Pixels image(pixels, 0);
    for (std::size_t i = 0; i + kGroup <= pixels; i += kGroup) {
        for (std::size_t k = 0; k < kGroup; ++k) {
            image[i + k] = packed[2 * i + start + kGroup - 1 - k];
        }
    }
    return image;
}

bool ExpectedMarker(const Pixels& packed) {
    const Pixels start{0xAA, 0xAA, 0x55, 0x55};
    const Pixels end{0xAA, 0x55, 0x55};
    return packed.size() >= kMarkerBytes &&
           std::equal(start.begin(), start.end(), packed.begin()) &&
           std::equal(end.begin(), end.end(), packed.begin() + 9);
}

void CheckPixels(const Pixels& packed, const Pixels& left, const Pixels& right) {
    Pixels first(left.size(), 0xEE);
    Pixels second(right.size(), 0xEE);
    Korvex3Sync::SplitPackedPixels(packed.data(), first.size(), first.data(), second.data());
    Require(first == left);
    Require(second == right);
    Pixels alone(right.size(), 0xEE);
    Korvex3Sync::SplitPackedPixels(packed.data(), alone.size(), nullptr, alone.data());
    Require(alone == right);
}

/// The images of a camera that delivers frames of this many pixels.
void CheckFrame(const Pixels& packed, const std::vector<Pixels>& expected) {
    std::size_t height = 0;
    for (const std::size_t fits : kHeights) {
        height = height == 0 && packed.size() / 2 % fits == 0 ? fits : height;
    }
    const int rows = static_cast<int>(height);
    const int columns = static_cast<int>(packed.size() / 2 / height);
    Korvex3Sync::ImagePool pool;
    Korvex3Sync::SplitFrame frame;
    Require(Korvex3Sync::SplitPackedFrame(frame, packed.data(), columns, rows, pool));
    const std::size_t count = expected.size();
    Require(frame.images.size() == count && pool.Lent() == count);
    Require(frame.widths == std::vector<int>(count, columns));
    Require(frame.heights == std::vector<int>(count, rows));
    Require(frame.channels == std::vector<int>(count, 1));
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned char* const pixels = frame.images[i].Pixels();
        Require(Pixels(pixels, pixels + expected[i].size()) == expected[i]);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Exactly as large as the frame: a read or write behind it is found.
    const Pixels packed(data, data + size / 2 * 2);
    const bool color = ExpectedMarker(packed);
    if (packed.size() >= kMarkerBytes) {
        Require(Korvex3Sync::hardware::CarriesColorMarker(packed.data()) == color);
    }
    const Pixels left = Expected(packed, 0);
    const Pixels right = Expected(packed, kGroup);
    CheckPixels(packed, left, right);
    if (!packed.empty()) {
        CheckFrame(packed, color ? std::vector<Pixels>{right} : std::vector<Pixels>{left, right});
    }
    return 0;
}
