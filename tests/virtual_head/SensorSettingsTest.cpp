#include "virtual_head/cameras/SensorSettings.h"

#include <gtest/gtest.h>

#include <climits>

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;

TEST(SensorSettings, WordCarriesOrderGainAndExposure) {
    SensorSettings sensors{HeadDescription{}};
    EXPECT_TRUE(sensors.ApplyWord(0x0D55));
    EXPECT_EQ(sensors.SelectedOrder(), 1);
    EXPECT_EQ(sensors.Gain(), 3);
    EXPECT_EQ(sensors.Exposure(), 8500);
}

TEST(SensorSettings, LowByteOfZeroOnlySelects) {
    SensorSettings sensors{HeadDescription{}};
    ASSERT_TRUE(sensors.ApplyWord(0x0D55));
    EXPECT_TRUE(sensors.ApplyWord(0xFE00));
    EXPECT_EQ(sensors.SelectedOrder(), 2);
    EXPECT_TRUE(sensors.ApplyWord(0x0100));
    EXPECT_EQ(sensors.SelectedOrder(), 1);
    EXPECT_EQ(sensors.Gain(), 3);
    EXPECT_EQ(sensors.Exposure(), 8500);
}

TEST(SensorSettings, ZeroToThreeSelectTheOrderItself) {
    SensorSettings sensors{HeadDescription{}};
    for (int order = 0; order < 4; ++order) {
        EXPECT_TRUE(sensors.ApplyWord(order));
        EXPECT_EQ(sensors.SelectedOrder(), order);
    }
    EXPECT_TRUE(sensors.ApplyWord(4));
    EXPECT_EQ(sensors.SelectedOrder(), 0) << "4 is an exposure of 0.4 ms for order 0";
    EXPECT_EQ(sensors.Exposure(), 400);
}

TEST(SensorSettings, EachOrderHasItsOwnExposureAndGain) {
    SensorSettings sensors{HeadDescription{}};
    for (int order = 0; order < 4; ++order) {
        ASSERT_TRUE(sensors.ApplyWord(order));
        ASSERT_TRUE(sensors.SetExposure(1000 + order));
        ASSERT_TRUE(sensors.SetGain(order));
    }
    for (int order = 0; order < 4; ++order) {
        ASSERT_TRUE(sensors.ApplyWord(order));
        EXPECT_EQ(sensors.Exposure(), 1000 + order);
        EXPECT_EQ(sensors.Gain(), order);
    }
}

TEST(SensorSettings, WordThatIsNoneChangesNothing) {
    SensorSettings sensors{HeadDescription{}};
    ASSERT_TRUE(sensors.ApplyWord(2));
    const long exposure = sensors.Exposure();
    for (const int word : {-1, 0x10000, INT_MIN, INT_MAX}) {
        EXPECT_FALSE(sensors.ApplyWord(word)) << word;
    }
    EXPECT_FALSE(sensors.ApplyWord(17 << 10 | 1 << 8 | 50)) << "a gain of 17, above 16";
    EXPECT_EQ(sensors.SelectedOrder(), 2);
    EXPECT_EQ(sensors.Exposure(), exposure);
}

TEST(SensorSettings, ExposureAndGainHaveLimits) {
    HeadDescription description;
    description.gainLow = 2;
    description.gainHigh = 8;
    SensorSettings sensors{description};
    EXPECT_EQ(sensors.Gain(), 2);
    for (const int gain : {INT_MIN, -1, 1, 9, INT_MAX}) {
        EXPECT_FALSE(sensors.SetGain(gain)) << gain;
    }
    EXPECT_TRUE(sensors.SetGain(8));
    for (const long exposure : {LONG_MIN, -1L, 0L, 1000001L, LONG_MAX}) {
        EXPECT_FALSE(sensors.SetExposure(exposure)) << exposure;
    }
    EXPECT_TRUE(sensors.SetExposure(1));
    EXPECT_TRUE(sensors.SetExposure(1000000));
    EXPECT_EQ(sensors.Exposure(), 1000000);
    EXPECT_EQ(sensors.Gain(), 8);
}

}  // namespace
}  // namespace Korvex3Sync::tests
