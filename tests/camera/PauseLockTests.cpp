#include "camera/PauseLock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "platform/os/Event.h"

namespace Korvex3Sync {
namespace {

using namespace std::chrono_literals;

TEST(PauseLock, APauseKeepsOthersOutUntilItEnds) {
    PauseLock lock;
    lock.BeginPause();
    EXPECT_TRUE(lock.Paused());
    os::Event entered;
    std::thread grab([&] {
        lock.Enter();
        entered.Set();
        lock.Leave();
    });
    EXPECT_EQ(entered.Wait(50ms), os::WaitResult::TimedOut);
    lock.EndPause();
    grab.join();
    EXPECT_TRUE(entered.IsSet());
    EXPECT_FALSE(lock.Paused());
}

TEST(PauseLock, AnyThreadEndsAPause) {
    PauseLock lock;
    std::thread([&] { lock.BeginPause(); }).join();
    lock.EndPause();
    std::thread([&] {
        lock.Enter();
        lock.Leave();
    }).join();
    EXPECT_FALSE(lock.Paused());
}

TEST(PauseLock, EndingAPauseNeverReleasesAnotherHold) {
    PauseLock lock;
    os::Event held;
    os::Event letGo;
    std::atomic<bool> inside{true};
    std::thread grab([&] {
        lock.Enter();
        held.Set();
        letGo.Wait();
        inside = false;
        lock.Leave();
    });
    held.Wait();
    lock.EndPause();  // there is no pause: nothing happens
    std::thread other([&] {
        lock.Enter();
        EXPECT_FALSE(inside);
        lock.Leave();
    });
    letGo.Set();
    grab.join();
    other.join();
}

TEST(PauseLock, ThePausingThreadMayEnterAgain) {
    PauseLock lock;
    lock.BeginPause();
    lock.Enter();
    std::thread([&] { lock.EndPause(); }).join();
    std::atomic<bool> mine{true};
    std::thread other([&] {
        lock.Enter();
        EXPECT_FALSE(mine) << "the inner hold outlasts the pause";
        lock.Leave();
    });
    mine = false;
    lock.Leave();
    other.join();
}

TEST(PauseLock, AThreadThatEntersBackToBackCannotKeepAPauseOut) {
    PauseLock lock;
    std::atomic<bool> end{false};
    std::thread grab([&] {
        while (!end) {
            lock.Enter();
            lock.Leave();
        }
    });
    for (int i = 0; i < 100; ++i) {
        lock.BeginPause();
        lock.EndPause();
    }
    end = true;
    grab.join();
}

}  // namespace
}  // namespace Korvex3Sync
