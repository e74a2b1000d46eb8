#include "camera/PauseLock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "platform/os/Event.h"

namespace Korvex3Sync::tests {
namespace {

using namespace std::chrono_literals;

/// Another thread that enters once, and leaves at once. Joined.
class Entrant {
public:
    explicit Entrant(PauseLock& lock)
        : m_thread([this, &lock] {
              lock.Enter();
              m_entered.Set();
              lock.Leave();
          }) {}
    ~Entrant() { m_thread.join(); }
    Entrant(const Entrant&) = delete;
    Entrant& operator=(const Entrant&) = delete;

    /// Whether it is kept out for as long as a thread that is let in needs many times.
    bool StaysOutside() { return m_entered.Wait(100ms) == os::WaitResult::TimedOut; }
    bool ComesIn() { return m_entered.Wait(1min) == os::WaitResult::Signalled; }

private:
    os::Event m_entered;
    std::thread m_thread;
};

TEST(PauseLock, APauseKeepsOthersOutUntilItEnds) {
    PauseLock lock;
    lock.BeginPause();
    EXPECT_TRUE(lock.Paused());
    Entrant grab(lock);
    EXPECT_TRUE(grab.StaysOutside());
    lock.EndPause();
    EXPECT_TRUE(grab.ComesIn());
    EXPECT_FALSE(lock.Paused());
}

TEST(PauseLock, AnyThreadEndsAPause) {
    PauseLock lock;
    std::thread([&] { lock.BeginPause(); }).join();
    lock.EndPause();
    EXPECT_TRUE(Entrant(lock).ComesIn());
    EXPECT_FALSE(lock.Paused());
}

TEST(PauseLock, EndingAPauseNeverReleasesAnotherHold) {
    PauseLock lock;
    os::Event held;
    os::Event letGo;
    std::thread grab([&] {
        lock.Enter();
        held.Set();
        letGo.Wait();
        lock.Leave();
    });
    held.Wait();
    lock.EndPause();  // there is no pause: nothing happens
    Entrant other(lock);
    EXPECT_TRUE(other.StaysOutside());
    letGo.Set();
    grab.join();
    EXPECT_TRUE(other.ComesIn());
}

TEST(PauseLock, ThePausingThreadMayEnterAgain) {
    PauseLock lock;
    lock.BeginPause();
    lock.Enter();
    std::thread([&] { lock.EndPause(); }).join();
    Entrant other(lock);
    EXPECT_TRUE(other.StaysOutside()) << "the inner hold outlasts the pause";
    lock.Leave();
    EXPECT_TRUE(other.ComesIn());
}

TEST(PauseLock, TheOwnersSideJoinsAPauseThatAnotherThreadMade) {
    PauseLock lock;
    os::Event paused;
    os::Event end;
    std::thread pauser([&] {
        lock.BeginPause();
        paused.Set();
        end.Wait();  // a thread that ends may give its id to the next one
    });
    paused.Wait();
    lock.EnterOrJoinPause();
    lock.EndPause();
    Entrant grab(lock);
    EXPECT_TRUE(grab.StaysOutside()) << "the joined hold outlasts the pause";
    lock.Leave();
    EXPECT_TRUE(grab.ComesIn());
    end.Set();
    pauser.join();
}

TEST(PauseLock, WithoutAPauseTheOwnersSideWaitsForItsTurn) {
    PauseLock lock;
    os::Event entered;
    lock.Enter();
    std::thread owner([&] {
        lock.EnterOrJoinPause();
        entered.Set();
        lock.Leave();
    });
    EXPECT_EQ(entered.Wait(100ms), os::WaitResult::TimedOut);
    lock.Leave();
    owner.join();
    EXPECT_TRUE(entered.IsSet());
}

TEST(PauseLock, AThreadThatEntersBackToBackCannotKeepAPauseOut) {
    constexpr int kRounds = 20;
    PauseLock lock;
    int pausedBetween = 0;
    lock.Enter();
    for (int round = 0; round < kRounds; ++round) {
        os::Event asking;
        std::atomic<bool> paused{false};
        std::thread pauser([&] {
            asking.Set();
            lock.BeginPause();
            paused = true;
            lock.EndPause();
        });
        asking.Wait();
        std::this_thread::sleep_for(10ms);  // now it has asked, nearly always
        lock.Leave();
        lock.Enter();
        pausedBetween += paused ? 1 : 0;
        lock.Leave();
        pauser.join();
        lock.Enter();
    }
    lock.Leave();
    EXPECT_GE(pausedBetween, kRounds / 2);
}

}  // namespace
}  // namespace Korvex3Sync::tests
