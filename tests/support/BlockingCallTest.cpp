#include "support/BlockingCall.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>

#include "platform/os/Event.h"

namespace Korvex3Sync::tests::support {
namespace {

TEST(BlockingCall, IsBlockedByALockUntilItIsLetGo) {
    std::mutex mutex;
    std::unique_lock lock(mutex);
    BlockingCall call([&] { const std::lock_guard wait(mutex); });
    EXPECT_TRUE(call.WaitUntilBlocked());
    lock.unlock();
    EXPECT_TRUE(call.WaitUntilReturned());
}

TEST(BlockingCall, ShortSleepsOnItsWayDoNotCount) {
    os::Event open;
    std::atomic<bool> arrived{false};
    BlockingCall call([&] {
        for (int i = 0; i < 200; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        arrived = true;
        open.Wait();
    });
    EXPECT_TRUE(call.WaitUntilBlocked());
    EXPECT_TRUE(arrived);
    open.Set();
}

TEST(BlockingCall, AThreadThatIsBusyIsNotBlocked) {
    os::Event open;
    std::atomic<bool> arrived{false};
    BlockingCall call([&] {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(200);
        while (std::chrono::steady_clock::now() < end) {
        }
        arrived = true;
        open.Wait();
    });
    EXPECT_TRUE(call.WaitUntilBlocked());
    EXPECT_TRUE(arrived);
    open.Set();
}

TEST(BlockingCall, OneThatReturnsIsNotBlocked) {
    BlockingCall call([] {});
    EXPECT_FALSE(call.WaitUntilBlocked());
    EXPECT_TRUE(call.WaitUntilReturned());
}

TEST(BlockingCall, AThreadCanBeWaitedForByItsNumber) {
    os::Event known;
    os::Event open;
    std::atomic<int> number{0};
    std::thread thread([&] {
        number = ThisThread();
        known.Set();
        open.Wait();
    });
    known.Wait();
    EXPECT_NE(number, ThisThread());
    EXPECT_TRUE(WaitUntilBlocked(number));
    open.Set();
    thread.join();
}

}  // namespace
}  // namespace Korvex3Sync::tests::support
