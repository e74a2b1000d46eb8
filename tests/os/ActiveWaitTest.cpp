#include "platform/os/ActiveWait.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <vector>

#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using os::ActiveWait;

/// Whether a wait asked at all; it waits in vain if it did.
bool AsksInVain(ActiveWait& wait) {
    bool asked = false;
    wait.Wait([&] {
        asked = true;
        return false;
    });
    return asked;
}

bool AsksAndIsDone(ActiveWait& wait) {
    bool asked = false;
    wait.Wait([&] { return asked = true; });
    return asked;
}

int LeftOut(ActiveWait& wait) {
    int leftOut = 0;
    while (!AsksInVain(wait)) {
        ++leftOut;
    }
    return leftOut;
}

TEST(ActiveWaitTest, AsksUntilItIsDone) {
    static constexpr int kTimes = 3;
    // The system may take the processor away for longer than a wait lasts.
    EXPECT_TRUE(support::WaitUntil([] {
        ActiveWait wait;
        int asked = 0;
        wait.Wait([&asked] { return ++asked == kTimes; });
        EXPECT_LE(asked, kTimes);
        return asked == kTimes;
    }));
}

TEST(ActiveWaitTest, EndsInVainAfterItsTime) {
    using Clock = std::chrono::steady_clock;
    Clock::duration shortest = Clock::duration::max();
    for (int i = 0; i < 20; ++i) {
        ActiveWait wait;
        const auto begin = Clock::now();
        EXPECT_TRUE(AsksInVain(wait));
        shortest = std::min(shortest, Clock::now() - begin);
    }
    EXPECT_GE(shortest, ActiveWait::kLongest);
}

TEST(ActiveWaitTest, LeavesMoreAndMoreWaitsOutWhileTheyAreInVain) {
    ActiveWait wait;
    EXPECT_EQ(LeftOut(wait), 0);
    for (const int expected : {1, 3, 7, 15, 31, 63, 127, 127, 127}) {
        EXPECT_EQ(LeftOut(wait), expected);
    }
}

TEST(ActiveWaitTest, LeavesNoneOutOnceOneIsDone) {
    ActiveWait wait;
    for (const int expected : {0, 1, 3}) {
        EXPECT_EQ(LeftOut(wait), expected);
    }
    for (int i = 0; i < 7; ++i) {
        EXPECT_FALSE(AsksAndIsDone(wait));
    }
    for (int i = 0; i < 10; ++i) {
        EXPECT_TRUE(AsksAndIsDone(wait));
    }
    EXPECT_EQ(LeftOut(wait), 0);
    EXPECT_EQ(LeftOut(wait), 1);
}

TEST(ActiveWaitTest, OneThreadAtATimeWaits) {
    ActiveWait wait;
    bool otherAsked = true;
    wait.Wait([&] {
        std::thread([&] { otherAsked = AsksAndIsDone(wait); }).join();
        return true;
    });
    EXPECT_FALSE(otherAsked);
    EXPECT_TRUE(AsksAndIsDone(wait));
}

}  // namespace
}  // namespace Korvex3Sync::tests
