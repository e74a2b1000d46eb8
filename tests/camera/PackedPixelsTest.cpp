#include "camera/images/PackedPixels.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "platform/include/PackedFrameLayout.h"
#include "support/PackedFrames.h"

namespace Korvex3Sync::tests {
namespace {

std::vector<unsigned char> Noise(std::size_t bytes, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<unsigned char> noise(bytes);
    for (auto& byte : noise) {
        byte = static_cast<unsigned char>(random());
    }
    return noise;
}

TEST(SplitPackedPixels, UndoesThePackingForEverySizeUpTo1024Pixels) {
    for (std::size_t pixels = 4; pixels <= 1024; pixels += 4) {
        const auto first = Noise(pixels, 1);
        const auto second = Noise(pixels, 2);
        std::vector<unsigned char> a(pixels);
        std::vector<unsigned char> b(pixels);
        SplitPackedPixels(support::Pack(first, second).data(), pixels, a.data(), b.data());
        ASSERT_EQ(a, first) << pixels;
        ASSERT_EQ(b, second) << pixels;
    }
}

TEST(SplitPackedPixels, UndoesThePackingOfAWholeFrameAtAnyAlignment) {
    constexpr std::size_t kPixels = 1280 * 1024;
    const auto first = Noise(kPixels, 3);
    const auto second = Noise(kPixels, 4);
    const auto packed = support::Pack(first, second);
    for (std::size_t offset : {0, 1, 7}) {
        std::vector<unsigned char> shifted(offset);
        shifted.insert(shifted.end(), packed.begin(), packed.end());
        std::vector<unsigned char> a(kPixels + offset);
        std::vector<unsigned char> b(kPixels + offset);
        SplitPackedPixels(shifted.data() + offset, kPixels, a.data() + offset, b.data() + offset);
        EXPECT_TRUE(std::equal(first.begin(), first.end(), a.begin() + std::ptrdiff_t(offset)));
        EXPECT_TRUE(std::equal(second.begin(), second.end(), b.begin() + std::ptrdiff_t(offset)));
    }
}

TEST(SplitPackedPixels, WritesTheSecondImageAloneWhenTheFirstIsNotWanted) {
    const auto second = Noise(64, 5);
    std::vector<unsigned char> b(64);
    SplitPackedPixels(support::Pack(Noise(64, 6), second).data(), 64, nullptr, b.data());
    EXPECT_EQ(b, second);
}

TEST(SplitPackedPixels, ZeroesThePixelsBehindTheLastGroupOfFour) {
    const auto packed = Noise(14, 7);
    std::vector<unsigned char> a(7, 0xEE);
    std::vector<unsigned char> b(7, 0xEE);
    SplitPackedPixels(packed.data(), 7, a.data(), b.data());
    EXPECT_EQ(a, (std::vector<unsigned char>{packed[3], packed[2], packed[1], packed[0], 0, 0, 0}));
    EXPECT_EQ(b, (std::vector<unsigned char>{packed[7], packed[6], packed[5], packed[4], 0, 0, 0}));
}

TEST(ColorMarker, NeedsEveryMarkerByte) {
    const auto marked = support::ColorFrame(64, 0x31, 200);
    EXPECT_TRUE(hardware::CarriesColorMarker(marked.data()));
    for (std::size_t byte = 0; byte < 12; ++byte) {
        auto changed = marked;
        changed[byte] ^= 0xFF;
        const bool markerByte = byte <= 3 || byte >= 9;
        EXPECT_EQ(hardware::CarriesColorMarker(changed.data()), !markerByte) << "byte " << byte;
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
