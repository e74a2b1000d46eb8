#include "sync/frames/CallbackTimes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "support/Seed.h"

namespace Korvex3Sync::tests {
namespace {

using std::chrono::microseconds;
using std::chrono::nanoseconds;

constexpr double kMostAbove = 1.04;

TEST(CallbackTimes, AreZeroBeforeTheFirstCall) {
    const CallbackTimes times;
    EXPECT_EQ(times.Percentile(0.5), 0u);
    EXPECT_EQ(times.Percentile(0.99), 0u);
    EXPECT_EQ(times.Longest(), 0u);
}

TEST(CallbackTimes, RoundUpToWholeMicrosecondsAndTakeNoTimeBelowNothing) {
    CallbackTimes times;
    times.Add(nanoseconds(-5));
    EXPECT_EQ(times.Longest(), 0u);
    times.Add(nanoseconds(1));
    EXPECT_EQ(times.Longest(), 1u);
    times.Add(nanoseconds(1001));
    EXPECT_EQ(times.Longest(), 2u);
}

TEST(CallbackTimes, ShortOnesAreExact) {
    for (int time = 0; time < 64; ++time) {
        CallbackTimes times;
        times.Add(microseconds(time));
        times.Add(microseconds(1000));
        EXPECT_EQ(times.Percentile(0.5), static_cast<std::uint64_t>(time));
    }
}

TEST(CallbackTimes, HalfAndNearlyAllAreThoseOfTheCallInThatPlace) {
    CallbackTimes times;
    for (int time = 1; time <= 50; ++time) {
        times.Add(microseconds(time));
    }
    EXPECT_EQ(times.Percentile(0.5), 25u);
    EXPECT_EQ(times.Percentile(0.98), 49u);
    EXPECT_EQ(times.Percentile(0.99), 50u);
    EXPECT_EQ(times.Percentile(1.0), 50u);
}

TEST(CallbackTimes, OneLongCallInAHundredIsTheLongestOnly) {
    CallbackTimes times;
    for (int call = 0; call < 99; ++call) {
        times.Add(microseconds(20));
    }
    times.Add(std::chrono::seconds(2));
    EXPECT_EQ(times.Percentile(0.99), 20u);
    EXPECT_EQ(times.Longest(), 2000000u);
}

TEST(CallbackTimes, DaysAreStillATime) {
    CallbackTimes times;
    times.Add(std::chrono::hours(24 * 365));
    EXPECT_EQ(times.Longest(), 365ull * 24 * 3600 * 1000000);
    EXPECT_EQ(times.Percentile(0.5), times.Longest());
}

TEST(CallbackTimes, NoneIsReadBelowTheTrueOneOrMoreThanFourPerCentAbove) {
    for (std::uint64_t time = 1; time < (std::uint64_t{1} << 38); time += 1 + time / 97) {
        CallbackTimes times;
        times.Add(microseconds(static_cast<std::int64_t>(time)));
        times.Add(microseconds(static_cast<std::int64_t>(2 * time + 10)));
        const std::uint64_t read = times.Percentile(0.5);
        ASSERT_GE(read, time);
        ASSERT_LE(static_cast<double>(read), kMostAbove * static_cast<double>(time));
    }
}

TEST(CallbackTimes, RandomTimesKeepToTheLimitsToo) {
    const unsigned seed = support::Seed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    std::lognormal_distribution<double> spread(7.0, 2.0);
    CallbackTimes times;
    std::vector<std::uint64_t> all;
    for (int call = 0; call < 10000; ++call) {
        all.push_back(static_cast<std::uint64_t>(spread(random)));
        times.Add(microseconds(static_cast<std::int64_t>(all.back())));
    }
    std::sort(all.begin(), all.end());
    EXPECT_EQ(times.Longest(), all.back());
    for (double share : {0.5, 0.99}) {
        const auto place = static_cast<std::size_t>(share * static_cast<double>(all.size()));
        const std::uint64_t truth = all[place - 1];
        EXPECT_GE(times.Percentile(share), truth) << share;
        // The class of the call after it, where 99 % of 10000 is rounded to one call more.
        EXPECT_LE(static_cast<double>(times.Percentile(share)),
                  kMostAbove * static_cast<double>(all[place]))
            << share;
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
