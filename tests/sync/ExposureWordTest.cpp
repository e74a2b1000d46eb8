#include "sync/cameras/ExposureWord.h"

#include <gtest/gtest.h>

#include <climits>
#include <limits>

namespace Korvex3Sync::tests {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

TEST(ExposureWord, CarriesGainAndOrderAboveTheTenthsOfTheExposure) {
    EXPECT_EQ(ExposureGainWord(1, 8.5, 3), 0x0D55);
    EXPECT_EQ(ExposureGainWord(3, 25.5, 63), 0xFFFF);
    EXPECT_EQ(ExposureGainWord(0, 0.0, 0), 0);
}

TEST(ExposureWord, CutsEachPartToItsBits) {
    EXPECT_EQ(ExposureGainWord(0, 30.0, 1), 0x042C);
    EXPECT_EQ(ExposureGainWord(0, 25.6, 1), 0x0400);
    EXPECT_EQ(ExposureGainWord(5, 1.0, 64), 0x010A) << "order 1, gain 0";
    EXPECT_EQ(ExposureGainWord(-1, 1.0, -1), 0xFF0A);
    EXPECT_EQ(ExposureGainWord(INT_MIN, 1.0, INT_MAX), 0xFC0A);
}

TEST(ExposureWord, CutsTheExposureDownToWholeTenths) {
    EXPECT_EQ(ExposureGainWord(0, 8.59, 0), 85);
    EXPECT_EQ(ExposureGainWord(0, 0.09, 0), 0);
    EXPECT_EQ(ExposureGainWord(0, -0.09, 0), 0) << "towards zero";
    EXPECT_EQ(ExposureGainWord(0, -0.1, 0), 0xFF);
    EXPECT_EQ(ExposureGainWord(0, -25.7, 0), 0xFF);
}

TEST(ExposureWord, TakesAnyNumberAsAnExposure) {
    for (const double exposure :
         {kNan, kInfinity, -kInfinity, std::numeric_limits<double>::max(),
          std::numeric_limits<double>::lowest(), std::numeric_limits<double>::denorm_min()}) {
        EXPECT_EQ(ExposureGainWord(2, exposure, 1), 0x0600) << exposure;
    }
    EXPECT_EQ(ExposureGainWord(0, 429496729.7, 0), 1) << "more tenths than 32 bits hold";
    EXPECT_EQ(ExposureGainWord(0, 1e30, 0) & ~0xFF, 0);
}

TEST(ExposureWord, SelectsAnOrderWithAnEmptyLowByte) {
    EXPECT_EQ(SelectionWord(0), 0);
    EXPECT_EQ(SelectionWord(3), 0x0300);
    EXPECT_EQ(SelectionWord(6), 0x0200);
    EXPECT_EQ(SelectionWord(-1), 0x0300);
}

TEST(ExposureMicroseconds, AreCutToWholeOnesWithin32Bits) {
    EXPECT_EQ(ExposureMicroseconds(12.3456), 12345);
    EXPECT_EQ(ExposureMicroseconds(-0.0015), -1);
    EXPECT_EQ(ExposureMicroseconds(0.0), 0);
    EXPECT_EQ(ExposureMicroseconds(1e12), INT_MAX);
    EXPECT_EQ(ExposureMicroseconds(-1e12), INT_MIN);
    EXPECT_EQ(ExposureMicroseconds(kInfinity), INT_MAX);
    EXPECT_EQ(ExposureMicroseconds(-kInfinity), INT_MIN);
    EXPECT_EQ(ExposureMicroseconds(kNan), 0);
}

}  // namespace
}  // namespace Korvex3Sync::tests
