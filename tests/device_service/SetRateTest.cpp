#include "device_service/core/SetRate.h"

#include <gtest/gtest.h>

namespace Korvex3Sync::tests {
namespace {

using device_service::SetRate;
using std::chrono::milliseconds;

const SetRate::Time kStart{std::chrono::hours(5)};

TEST(SetRate, IsZeroWithoutSets) {
    EXPECT_EQ(SetRate().PerSecond(kStart), 0U);
    EXPECT_EQ(SetRate().PerSecond(SetRate::Time{}), 0U);
}

TEST(SetRate, CountsTheSetsOfTheLastSecond) {
    SetRate rate;
    for (int ms = 0; ms < 5000; ms += 5) {
        rate.Count(kStart + milliseconds(ms));
    }
    EXPECT_EQ(rate.PerSecond(kStart + milliseconds(4999)), 200U);
    EXPECT_EQ(rate.PerSecond(kStart + milliseconds(5499)), 100U);
    EXPECT_EQ(rate.PerSecond(kStart + milliseconds(5899)), 20U);
    EXPECT_EQ(rate.PerSecond(kStart + milliseconds(5900)), 0U);
    EXPECT_EQ(rate.PerSecond(kStart + milliseconds(60000)), 0U);
}

TEST(SetRate, ForgetsWhatIsOlderThanASecond) {
    SetRate rate;
    rate.Count(kStart);
    rate.Count(kStart + milliseconds(950));
    EXPECT_EQ(rate.PerSecond(kStart + milliseconds(999)), 2U);
    EXPECT_EQ(rate.PerSecond(kStart + milliseconds(1000)), 1U);
    rate.Count(kStart + milliseconds(1000));
    EXPECT_EQ(rate.PerSecond(kStart + milliseconds(1000)), 2U);
}

}  // namespace
}  // namespace Korvex3Sync::tests
