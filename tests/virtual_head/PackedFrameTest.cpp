#include "virtual_head/images/PackedFrame.h"

#include <gtest/gtest.h>

#include "virtual_head/TestFiles.h"
#include "virtual_head/Unpacked.h"

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;
using Pixels = std::vector<std::uint8_t>;

constexpr std::size_t kPixels = 32 * 20;

TEST(PackedFrame, MonoFrameGivesBothImagesBack) {
    const Pixels first = RandomImage(32, 20, 1).pixels;
    const Pixels second = RandomImage(32, 20, 2).pixels;
    Pixels packed(2 * kPixels);
    PackMono(first.data(), second.data(), kPixels, packed.data());
    const auto frame = Unpack(packed.data(), kPixels);
    EXPECT_FALSE(frame.marker);
    EXPECT_EQ(frame.first, first);
    EXPECT_EQ(frame.second, second);
}

TEST(PackedFrame, ColorFrameCarriesMarkerAndMosaic) {
    const Pixels mosaic = RandomImage(32, 20, 3).pixels;
    Pixels packed(2 * kPixels, 0xEE);
    PackColor(mosaic.data(), kPixels, packed.data());
    const auto frame = Unpack(packed.data(), kPixels);
    EXPECT_TRUE(frame.marker);
    EXPECT_EQ(frame.second, mosaic);
}

TEST(PackedFrame, ColorFrameFromPackedMonoHasTheFirstImageAsMosaic) {
    const Pixels first = RandomImage(32, 20, 4).pixels;
    const Pixels second = RandomImage(32, 20, 5).pixels;
    Pixels mono(2 * kPixels);
    PackMono(first.data(), second.data(), kPixels, mono.data());
    Pixels packed(2 * kPixels, 0xEE);
    PackColorFromMono(mono.data(), kPixels, packed.data());
    Pixels expected(2 * kPixels, 0xEE);
    PackColor(first.data(), kPixels, expected.data());
    EXPECT_EQ(packed, expected);
}

TEST(PackedFrame, KeyReplacesPixelThreeOfTheSecondImageAndNothingElse) {
    const Pixels image(kPixels, 7);
    for (const int key : {0, 1, 128, 255}) {
        Pixels packed(2 * kPixels);
        PackMono(image.data(), image.data(), kPixels, packed.data());
        WriteKey(static_cast<std::uint8_t>(key), packed.data());
        const auto frame = Unpack(packed.data(), kPixels);
        Pixels second = image;
        second[3] = static_cast<std::uint8_t>(key);
        EXPECT_EQ(frame.key, key);
        EXPECT_EQ(frame.first, image);
        EXPECT_EQ(frame.second, second);
    }
}

TEST(PackedFrame, ImageThatHappensToFormTheMarkerIsChangedByOneGreyLevelInOnePixel) {
    Pixels first = RandomImage(32, 20, 6).pixels;
    const Pixels marker{0x55, 0x55, 0xAA, 0xAA, 0x55, 0x55, 0xAA};
    std::copy(marker.begin(), marker.end(), first.begin());
    const Pixels second = RandomImage(32, 20, 7).pixels;
    Pixels packed(2 * kPixels);
    PackMono(first.data(), second.data(), kPixels, packed.data());

    const auto frame = Unpack(packed.data(), kPixels);
    EXPECT_FALSE(frame.marker);
    int changed = 0;
    for (std::size_t i = 0; i < kPixels; ++i) {
        if (frame.first[i] != first[i]) {
            ++changed;
            EXPECT_EQ(std::abs(frame.first[i] - first[i]), 1);
        }
    }
    EXPECT_EQ(changed, 1);
    EXPECT_EQ(frame.second, second);
}

TEST(PackedFrame, ImageThatMissesTheMarkerByOneByteIsUnchanged) {
    const Pixels marker{0x55, 0x55, 0xAA, 0xAA, 0x55, 0x55, 0xAA};
    for (std::size_t other = 0; other < marker.size(); ++other) {
        Pixels first(kPixels, 9);
        std::copy(marker.begin(), marker.end(), first.begin());
        first[other] = 9;
        Pixels packed(2 * kPixels);
        PackMono(first.data(), first.data(), kPixels, packed.data());
        EXPECT_EQ(Unpack(packed.data(), kPixels).first, first) << "byte " << other;
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
