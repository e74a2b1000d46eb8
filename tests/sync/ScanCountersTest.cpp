#include "sync/frames/ScanCounters.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "support/Accounted.h"

namespace Korvex3Sync::tests {
namespace {

using std::chrono::microseconds;

ScanStatistics Read(const ScanCounters& counters) {
    ScanStatistics statistics;
    counters.Read(statistics);
    return statistics;
}

TEST(ScanCounters, CountEachStepInItsPlace) {
    ScanCounters counters;
    for (int i = 0; i < 4; ++i) {
        counters.UnroutedFrame();
    }
    for (int i = 0; i < 3; ++i) {
        counters.UndecodableFrame();
    }
    counters.ColorWithoutMono();
    counters.ColorForSnapshot();
    counters.ColorForSnapshot();
    counters.MonoArrived({7, false});
    counters.MonoArrived({0, true});
    const ScanStatistics statistics = Read(counters);
    EXPECT_EQ(statistics.unroutedFrames, 4u);
    EXPECT_EQ(statistics.undecodableFrames, 3u);
    EXPECT_EQ(statistics.colorWithoutMono, 1u);
    EXPECT_EQ(statistics.colorForSnapshot, 2u);
    EXPECT_EQ(statistics.missingKeys, 7u);
    EXPECT_EQ(statistics.repeatedKeys, 1u);
    EXPECT_EQ(statistics.setsPending, 2u);
    EXPECT_EQ(statistics.setsDelivered, 0u);
}

TEST(ScanCounters, APendingSetGoesOneOfFourWays) {
    ScanCounters counters;
    for (int i = 0; i < 10; ++i) {
        counters.MonoArrived({});
    }
    counters.SetDelivered(microseconds(10), true, false);
    counters.SetDelivered(microseconds(20), false, false);
    counters.SetDelivered(microseconds(30), false, true);
    counters.SetThrown(microseconds(40));
    counters.SetWithoutCallback();
    counters.SetDropped();
    const ScanStatistics statistics = Read(counters);
    EXPECT_EQ(statistics.setsDelivered, 3u);
    EXPECT_EQ(statistics.setsWithColor, 1u);
    EXPECT_EQ(statistics.monoWithoutColor, 1u);
    EXPECT_EQ(statistics.setsWithoutCallback, 2u);
    EXPECT_EQ(statistics.setsDropped, 1u);
    EXPECT_EQ(statistics.setsPending, 4u);
    EXPECT_EQ(statistics.callbackP50Us, 20u);
    EXPECT_EQ(statistics.callbackP99Us, 40u);
    EXPECT_EQ(statistics.callbackLongestUs, 40u);
}

TEST(ScanCounters, LeaveTheFiguresOfTheGrabThreadsAtZero) {
    const ScanStatistics statistics = Read(ScanCounters{});
    EXPECT_EQ(statistics.framesAccepted, 0u);
    EXPECT_EQ(statistics.failedSnaps, 0u);
    EXPECT_EQ(statistics.callbackLongestUs, 0u);
}

TEST(ScanCounters, WhatIsReadAddsUpWhileTwoThreadsCount) {
    ScanCounters counters;
    constexpr std::uint64_t kTriggers = 20000;
    std::atomic<int> running{2};
    const auto scan = [&] {
        for (std::uint64_t trigger = 0; trigger < kTriggers; trigger += 2) {
            counters.MonoArrived({1, false});
            counters.SetDelivered(microseconds(5), true, false);
        }
        --running;
    };
    std::thread first(scan);
    std::thread second(scan);
    std::uint64_t last = 0;
    while (running > 0) {
        const ScanStatistics statistics = Read(counters);
        const std::uint64_t accounted = support::AccountedTriggers(statistics);
        // Each step of a frame adds two triggers or none.
        EXPECT_EQ(accounted, 2 * (statistics.setsDelivered + statistics.setsPending));
        EXPECT_GE(accounted, last);
        EXPECT_LE(statistics.setsPending, 2u);
        last = accounted;
    }
    first.join();
    second.join();
    EXPECT_EQ(support::AccountedTriggers(Read(counters)), 2 * kTriggers);
}

}  // namespace
}  // namespace Korvex3Sync::tests
