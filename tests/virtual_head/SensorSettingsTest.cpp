#include "virtual_head/cameras/SensorSettings.h"

#include <gtest/gtest.h>

#include <climits>

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;

TEST(SensorSettings, OrderExposureAndGainAreSetAtOnce) {
    SensorSettings sensors{HeadDescription{}};
    EXPECT_TRUE(sensors.SelectAndSet(1, 8500, 3));
    EXPECT_EQ(sensors.SelectedOrder(), 1);
    EXPECT_EQ(sensors.Gain(), 3);
    EXPECT_EQ(sensors.Exposure(), 8500);
}

TEST(SensorSettings, SelectingAnOrderKeepsItsValues) {
    SensorSettings sensors{HeadDescription{}};
    ASSERT_TRUE(sensors.SelectAndSet(1, 8500, 3));
    EXPECT_TRUE(sensors.SelectOrder(2));
    EXPECT_EQ(sensors.SelectedOrder(), 2);
    EXPECT_TRUE(sensors.SelectOrder(1));
    EXPECT_EQ(sensors.SelectedOrder(), 1);
    EXPECT_EQ(sensors.Gain(), 3);
    EXPECT_EQ(sensors.Exposure(), 8500);
}

TEST(SensorSettings, EachOrderHasItsOwnExposureAndGain) {
    SensorSettings sensors{HeadDescription{}};
    for (int order = 0; order < 4; ++order) {
        ASSERT_TRUE(sensors.SelectOrder(order));
        ASSERT_TRUE(sensors.SetExposure(1000 + order));
        ASSERT_TRUE(sensors.SetGain(order));
    }
    for (int order = 0; order < 4; ++order) {
        ASSERT_TRUE(sensors.SelectOrder(order));
        EXPECT_EQ(sensors.Exposure(), 1000 + order);
        EXPECT_EQ(sensors.Gain(), order);
    }
}

TEST(SensorSettings, ValuesOutOfRangeChangeNothing) {
    SensorSettings sensors{HeadDescription{}};
    ASSERT_TRUE(sensors.SelectOrder(2));
    const long exposure = sensors.Exposure();
    const int gain = sensors.Gain();
    for (const int order : {-1, 4, INT_MIN, INT_MAX}) {
        EXPECT_FALSE(sensors.SelectOrder(order)) << order;
        EXPECT_FALSE(sensors.SelectAndSet(order, 5000, 1)) << order;
    }
    EXPECT_FALSE(sensors.SelectAndSet(1, 5000, 17)) << "a gain of 17, above 16";
    EXPECT_FALSE(sensors.SelectAndSet(1, 0, 1));
    EXPECT_FALSE(sensors.SelectAndSet(1, 1000001, 1));
    EXPECT_EQ(sensors.SelectedOrder(), 2);
    EXPECT_EQ(sensors.Exposure(), exposure);
    EXPECT_EQ(sensors.Gain(), gain);
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
