// The packed-frame split beside a plain loop, on frames of any size.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "camera/PackedFrameSplit.h"

namespace {

using Pixels = std::vector<unsigned char>;

constexpr std::size_t kGroup = 4;
constexpr std::size_t kMarkerBytes = 12;

/// What the split of `packed` has to be; `start` is the image's place in each 8 bytes.
Pixels Expected(const Pixels& packed, std::size_t pixels, std::size_t start) {
    Pixels image(pixels, 0);
    for (std::size_t i = 0; i + kGroup <= pixels; i += kGroup) {
        for (std::size_t k = 0; k < kGroup; ++k) {
            image[i + k] = packed[2 * i + start + kGroup - 1 - k];
        }
    }
    return image;
}

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Exactly as large as the frame: a read or write behind it is found.
    const std::size_t pixels = size / 2;
    const Pixels packed(data, data + 2 * pixels);
    if (packed.size() >= kMarkerBytes) {
        Korvex3Sync::HasColorMarker(packed.data());
    }
    Pixels first(pixels, 0xEE);
    Pixels second(pixels, 0xEE);
    Korvex3Sync::SplitPackedPixels(packed.data(), pixels, first.data(), second.data());
    Require(first == Expected(packed, pixels, 0));
    Require(second == Expected(packed, pixels, kGroup));
    Pixels alone(pixels, 0xEE);
    Korvex3Sync::SplitPackedPixels(packed.data(), pixels, nullptr, alone.data());
    Require(alone == second);
    return 0;
}
