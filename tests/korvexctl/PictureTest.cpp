#include "korvexctl/pictures/Picture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "korvexctl/Korvexctl.h"
#include "korvexctl/PixelAt.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::Demosaic;
using korvexctl::EncodePng;
using korvexctl::Picture;

/// A mosaic of one colour: every photosite sees its channel of it.
std::vector<std::uint8_t> MosaicOf(int width, int height, std::uint8_t red, std::uint8_t green,
                                   std::uint8_t blue) {
    std::vector<std::uint8_t> mosaic;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const bool evenRow = y % 2 == 0;
            const bool evenColumn = x % 2 == 0;
            mosaic.push_back(evenRow == evenColumn ? (evenRow ? red : blue) : green);
        }
    }
    return mosaic;
}

TEST(Demosaic, AColorIsTheSameEverywhereAlsoAtTheEdges) {
    for (const auto& [width, height] : {std::pair{2, 2}, {6, 4}, {5, 7}}) {
        const auto mosaic = MosaicOf(width, height, 200, 100, 50);
        const Picture picture = Demosaic(mosaic.data(), width, height);
        EXPECT_EQ(picture.channels, 3);
        ASSERT_EQ(picture.bytes.size(), static_cast<std::size_t>(width * height * 3));
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                EXPECT_EQ(PixelAt(picture, x, y), (std::vector{200, 100, 50})) << x << ',' << y;
            }
        }
    }
}

TEST(Demosaic, MissingColorsAreTheMeanOfTheirNeighbours) {
    // R G R G
    // G B G B
    // R G R G
    // G B G B
    const std::vector<std::uint8_t> mosaic{10, 20, 30, 40,  //
                                           50, 60, 70, 80,  //
                                           90, 15, 25, 35,  //
                                           45, 55, 65, 75};
    const Picture picture = Demosaic(mosaic.data(), 4, 4);
    // Blue photosite at (1,1): red from the diagonals, green from the cross.
    EXPECT_EQ(PixelAt(picture, 1, 1), (std::vector{39, 39, 60}));
    // Red photosite at (2,2).
    EXPECT_EQ(PixelAt(picture, 2, 2), (std::vector{25, 46, 68}));
    // Green photosite in a red row at (1,2): red beside it, blue above and below.
    EXPECT_EQ(PixelAt(picture, 1, 2), (std::vector{58, 15, 58}));
    // Green photosite in a blue row at (2,1): blue beside it, red above and below.
    EXPECT_EQ(PixelAt(picture, 2, 1), (std::vector{28, 70, 70}));
}

TEST(Png, KeepsEveryByte) {
    Picture grey{7, 3, 1, {}};
    Picture color{5, 2, 3, {}};
    for (int i = 0; i < 7 * 3; ++i) {
        grey.bytes.push_back(static_cast<std::uint8_t>(i * 12));
    }
    for (int i = 0; i < 5 * 2 * 3; ++i) {
        color.bytes.push_back(static_cast<std::uint8_t>(255 - i * 8));
    }
    for (const Picture& picture : {grey, color}) {
        const auto png = EncodePng(picture);
        const DecodedPng decoded = DecodePng({png.begin(), png.end()});
        EXPECT_EQ(decoded.width, picture.width);
        EXPECT_EQ(decoded.height, picture.height);
        EXPECT_EQ(decoded.channels, picture.channels);
        EXPECT_EQ(decoded.bytes, picture.bytes);
    }
}

TEST(Png, APictureWithTooFewBytesIsRefused) {
    EXPECT_THROW(EncodePng(Picture{4, 4, 1, std::vector<std::uint8_t>(15)}), std::runtime_error);
    EXPECT_THROW(EncodePng(Picture{0, 4, 1, {}}), std::runtime_error);
}

}  // namespace

}  // namespace Korvex3Sync::tests
