#include "camera/images/PackedPixels.h"

#include <cstdint>

// The split is limited by memory bandwidth. With vectors of 64 bytes it measured a fifth slower.
#define HWY_DISABLED_TARGETS (HWY_AVX3 | HWY_AVX3_DL)
// Highway compiles this file once for each instruction set and selects one at run time.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "camera/images/PackedPixels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Korvex3Sync::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// Byte order for 16 bytes (two groups of eight): the pixels of the first image, then those of the
// second.
[[maybe_unused]] alignas(16) constexpr std::uint8_t kOrder[16] = {3, 2, 1, 0, 11, 10, 9,  8,
                                                                  7, 6, 5, 4, 15, 14, 13, 12};

void SplitGroups(const std::uint8_t* HWY_RESTRICT packed, std::size_t groups,
                 std::uint8_t* HWY_RESTRICT first, std::uint8_t* HWY_RESTRICT second) {
    std::size_t group = 0;
#if HWY_TARGET != HWY_SCALAR
    const hn::ScalableTag<std::uint8_t> bytes;
    const hn::Repartition<std::uint64_t, decltype(bytes)> words;
    const std::size_t lanes = hn::Lanes(bytes);
    const auto order = hn::LoadDup128(bytes, kOrder);
    // Reads two vectors and writes one vector of each image.
    for (const std::size_t step = lanes / 4; group + step <= groups; group += step) {
        const std::uint8_t* const in = packed + 8 * group;
        const auto a = hn::BitCast(words, hn::TableLookupBytes(hn::LoadU(bytes, in), order));
        const auto b =
            hn::BitCast(words, hn::TableLookupBytes(hn::LoadU(bytes, in + lanes), order));
        if (first != nullptr) {
            hn::StoreU(hn::BitCast(bytes, hn::ConcatEven(words, b, a)), bytes, first + 4 * group);
        }
        hn::StoreU(hn::BitCast(bytes, hn::ConcatOdd(words, b, a)), bytes, second + 4 * group);
    }
#endif
    for (; group < groups; ++group) {
        for (std::size_t i = 0; i < 4; ++i) {
            if (first != nullptr) {
                first[4 * group + i] = packed[8 * group + 3 - i];
            }
            second[4 * group + i] = packed[8 * group + 7 - i];
        }
    }
}

}  // namespace Korvex3Sync::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

#include <algorithm>

namespace Korvex3Sync {

HWY_EXPORT(SplitGroups);

void SplitPackedPixels(const unsigned char* packed, std::size_t pixels, unsigned char* first,
                       unsigned char* second) {
    const std::size_t groups = pixels / 4;
    HWY_DYNAMIC_DISPATCH(SplitGroups)(packed, groups, first, second);
    for (unsigned char* image : {first, second}) {
        if (image != nullptr) {
            std::fill(image + 4 * groups, image + pixels, static_cast<unsigned char>(0));
        }
    }
}

}  // namespace Korvex3Sync

#endif  // HWY_ONCE
