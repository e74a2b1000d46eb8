#include "platform/cameras/ParameterWord.h"

#include <gtest/gtest.h>

#include <climits>

namespace Korvex3Sync::tests {
namespace {

using namespace cameras;

TEST(ParameterWord, CarriesOrderGainAndExposure) {
    const auto word = DecodeParameterWord(0x0D55);
    ASSERT_TRUE(word && word->setting);
    EXPECT_EQ(word->order, 1);
    EXPECT_EQ(word->setting->gain, 3);
    EXPECT_EQ(word->setting->exposure, 8500);
}

TEST(ParameterWord, LargestPartsAreKept) {
    const auto word = DecodeParameterWord(0xFFFF);
    ASSERT_TRUE(word && word->setting);
    EXPECT_EQ(word->order, 3);
    EXPECT_EQ(word->setting->gain, 63);
    EXPECT_EQ(word->setting->exposure, 25500);
}

TEST(ParameterWord, LowByteOfZeroOnlySelects) {
    for (const int word : {0xFE00, 0x0200}) {
        const auto decoded = DecodeParameterWord(word);
        ASSERT_TRUE(decoded) << word;
        EXPECT_EQ(decoded->order, 2) << word;
        EXPECT_FALSE(decoded->setting) << word;
    }
}

TEST(ParameterWord, ZeroToThreeSelectTheOrderItself) {
    for (int order = 0; order < 4; ++order) {
        const auto decoded = DecodeParameterWord(order);
        ASSERT_TRUE(decoded);
        EXPECT_EQ(decoded->order, order);
        EXPECT_FALSE(decoded->setting);
    }
    const auto exposure = DecodeParameterWord(4);
    ASSERT_TRUE(exposure && exposure->setting);
    EXPECT_EQ(exposure->order, 0) << "4 is an exposure of 0.4 ms for order 0";
    EXPECT_EQ(exposure->setting->exposure, 400);
}

TEST(ParameterWord, ANumberOfMoreThan16BitsIsNone) {
    for (const int word : {-1, 0x10000, INT_MIN, INT_MAX}) {
        EXPECT_FALSE(DecodeParameterWord(word)) << word;
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
