#include "virtual_head/cameras/ExposureQueue.h"

#include <gtest/gtest.h>

#include <thread>

#include "platform/os/Event.h"

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;
using namespace std::chrono_literals;

TEST(ExposureQueue, ClosingEndsAPopThatWaits) {
    // A round in which the closing comes first proves nothing; of many, most find a waiting one.
    for (int round = 0; round < 200; ++round) {
        ExposureQueue queue(1);
        os::Event begun;
        std::thread waiting([&] {
            begun.Set();
            EXPECT_FALSE(queue.Pop(std::chrono::steady_clock::now() + 24h)
                             .has_value());  // unless closed, longer than a test may take
        });
        begun.Wait();
        std::this_thread::yield();
        queue.Close();
        waiting.join();
    }
}

TEST(ExposureQueue, AnExposureEndsAPopThatWaits) {
    ExposureQueue queue(1);
    std::thread pushing([&] { EXPECT_EQ(queue.Push({}), ExposureQueue::Pushed::Taken); });
    EXPECT_TRUE(queue.Pop(std::chrono::steady_clock::now() + 24h).has_value());
    pushing.join();
}

TEST(ExposureQueue, AClosedOneTakesAndGivesNothing) {
    ExposureQueue queue(2);
    Exposure counted;
    counted.counted = true;
    ASSERT_EQ(queue.Push(counted), ExposureQueue::Pushed::Taken);
    queue.Close();
    EXPECT_EQ(queue.Counted().dropped[0], 1U) << "what waited";
    EXPECT_EQ(queue.Push({}), ExposureQueue::Pushed::Closed);
    EXPECT_FALSE(queue.Pop(std::chrono::steady_clock::now() + 24h).has_value());
}

TEST(ExposureQueue, ClearDropsWhatWaits) {
    ExposureQueue queue(4);
    ASSERT_EQ(queue.Push({}), ExposureQueue::Pushed::Taken);
    queue.Clear();
    EXPECT_FALSE(queue.Pop(std::chrono::steady_clock::now() + 0ms).has_value());
    EXPECT_EQ(queue.Lost(), 0U);
}

TEST(ExposureQueue, WhatFindsNoRoomIsCounted) {
    ExposureQueue queue(1);
    ASSERT_EQ(queue.Push({}), ExposureQueue::Pushed::Taken);
    EXPECT_EQ(queue.Push({}), ExposureQueue::Pushed::NoRoom);
    EXPECT_EQ(queue.Lost(), 1U);
    EXPECT_TRUE(queue.Pop(std::chrono::steady_clock::now() + 24h).has_value());
    EXPECT_EQ(queue.Push({}), ExposureQueue::Pushed::Taken);
}

}  // namespace
}  // namespace Korvex3Sync::tests
