#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "platform/os/Clock.h"
#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Event.h"
#include "platform/os/FairCriticalSection.h"
#include "platform/os/File.h"
#include "platform/os/Thread.h"
#include "platform/os/TimeScale.h"
#include "support/BlockingCall.h"
#include "support/Environment.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {
namespace {

using namespace os;
using namespace std::chrono_literals;

// The compiler's analysis knows no re-entrance.
void EnterAgain(CriticalSection& section) KORVEX_NO_THREAD_SAFETY_ANALYSIS {
    section.Enter();
}
void LeaveOnce(CriticalSection& section) KORVEX_NO_THREAD_SAFETY_ANALYSIS {
    section.Leave();
}

TEST(CriticalSection, KnowsItsOwnerAndIsReentrant) {
    CriticalSection section;
    EXPECT_FALSE(section.OwnedByCaller());
    EnterAgain(section);
    EnterAgain(section);
    LeaveOnce(section);
    EXPECT_TRUE(section.OwnedByCaller());
    std::thread([&] { EXPECT_FALSE(section.OwnedByCaller()); }).join();
    LeaveOnce(section);
    EXPECT_FALSE(section.OwnedByCaller());
}

TEST(CriticalSection, LeaveIfOwnerNeverReleasesTheHoldOfAnother) {
    CriticalSection section;
    EnterAgain(section);
    std::thread([&] { section.LeaveIfOwner(); }).join();
    EXPECT_TRUE(section.OwnedByCaller());
    section.LeaveIfOwner();
    EXPECT_FALSE(section.OwnedByCaller());
}

TEST(CriticalSection, KeepsThreadsApart) {
    CriticalSection section;
    int count = 0;
    const auto add = [&] {
        for (int i = 0; i < 10000; ++i) {
            CriticalSectionGuard guard(section);
            ++count;
        }
    };
    std::thread other(add);
    add();
    other.join();
    EXPECT_EQ(count, 20000);
}

// The compiler's analysis knows no re-entrance.
void EnterAgain(FairCriticalSection& section) KORVEX_NO_THREAD_SAFETY_ANALYSIS {
    section.Enter();
}
void LeaveOnce(FairCriticalSection& section) KORVEX_NO_THREAD_SAFETY_ANALYSIS {
    section.Leave();
}

TEST(FairCriticalSection, IsReentrantAndFreeOnceItWasLeftAsOften) {
    FairCriticalSection section;
    EnterAgain(section);
    EnterAgain(section);
    LeaveOnce(section);
    os::Event entered;
    std::thread other([&] {
        const FairCriticalSectionGuard inside(section);
        entered.Set();
    });
    EXPECT_EQ(entered.Wait(50ms), WaitResult::TimedOut) << "one level is left";
    LeaveOnce(section);
    other.join();
}

TEST(FairCriticalSection, KeepsThreadsApart) {
    FairCriticalSection section;
    int inside = 0;
    int entries = 0;
    const auto work = [&] {
        for (int i = 0; i < 1000; ++i) {
            const FairCriticalSectionGuard guard(section);
            EXPECT_EQ(++inside, 1);
            ++entries;
            --inside;
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_EQ(entries, 2000);
}

TEST(FairCriticalSection, IsGivenInTheOrderOfAsking) {
    constexpr int kThreads = 5;
    FairCriticalSection section;
    std::vector<int> order;
    std::vector<std::unique_ptr<support::BlockingCall>> calls;
    EnterAgain(section);
    for (int number = 0; number < kThreads; ++number) {
        calls.push_back(std::make_unique<support::BlockingCall>([&section, &order, number] {
            const FairCriticalSectionGuard inside(section);
            order.push_back(number);
        }));
        EXPECT_TRUE(calls.back()->WaitUntilBlocked()) << number;
    }
    LeaveOnce(section);
    calls.clear();
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3, 4}));
}

TEST(Event, StaysSetUntilReset) {
    Event event;
    EXPECT_EQ(event.Wait(1ms), WaitResult::TimedOut);
    event.Set();
    EXPECT_EQ(event.Wait(0ms), WaitResult::Signalled);
    EXPECT_EQ(event.Wait(0ms), WaitResult::Signalled);
    event.Reset();
    EXPECT_FALSE(event.IsSet());
}

TEST(Event, WakesAWaiterOfAnotherThread) {
    Event event;
    WaitResult result = WaitResult::TimedOut;
    std::thread waiter([&] { result = event.Wait(60000ms); });
    event.Set();
    waiter.join();
    EXPECT_EQ(result, WaitResult::Signalled);
}

/// Threads that wait for a change of one value.
class Value {
public:
    void Set(int value) {
        MutexGuard lock(m_mutex);
        m_value = value;
        m_changed.NotifyAll();
    }
    void WaitFor(int value) {
        MutexGuard lock(m_mutex);
        while (m_value != value) {
            m_changed.Wait(m_mutex);
        }
    }
    bool ComesUntil(int value, std::chrono::steady_clock::time_point deadline) {
        MutexGuard lock(m_mutex);
        while (m_value != value) {
            if (!m_changed.WaitUntil(m_mutex, deadline)) {
                return m_value == value;
            }
        }
        return true;
    }

private:
    Mutex m_mutex;
    Condition m_changed;
    int m_value KORVEX_GUARDED_BY(m_mutex) = 0;
};

TEST(Condition, WakesEveryWaiterAndHoldsTheMutexAgain) {
    Value value;
    std::thread first([&] {
        value.WaitFor(1);
        value.Set(2);
    });
    std::thread second(
        [&] { EXPECT_TRUE(value.ComesUntil(2, std::chrono::steady_clock::now() + 60s)); });
    value.Set(1);
    first.join();
    second.join();
}

TEST(Condition, EndsAtItsDeadline) {
    Value value;
    const auto deadline = std::chrono::steady_clock::now() + 20ms;
    EXPECT_FALSE(value.ComesUntil(1, deadline));
    EXPECT_GE(std::chrono::steady_clock::now(), deadline);
    value.Set(1);  // the mutex was given back
}

TEST(TimeScale, GivesTimersWholeMilliseconds) {
    EXPECT_EQ(ScaledMilliseconds(1500ms), 1500);
    EXPECT_EQ(ScaledMilliseconds(-1ms), 0);
    EXPECT_EQ(ScaledMilliseconds(std::chrono::hours(24 * 365)), 2147483647);
    const ScopedTimeScale scale(0.001);
    EXPECT_EQ(ScaledMilliseconds(1500ms), 2);
    EXPECT_EQ(ScaledMilliseconds(0ms), 0);
}

TEST(TimeScale, ShortensNominalTimeWhileItLives) {
    {
        ScopedTimeScale scale(0.001);
        EXPECT_EQ(Scaled(100000ms), std::chrono::steady_clock::duration(100ms));
        Event never;
        EXPECT_EQ(never.Wait(100000ms), WaitResult::TimedOut);
        SleepFor(10000ms);
    }
    EXPECT_EQ(Scaled(100ms), std::chrono::steady_clock::duration(100ms));
}

#if KORVEX_CHECKS
TEST(TimeScale, OfAProgramComesFromItsEnvironment) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    Scaled(1ms);  // this process keeps its own
    SetVariable("KORVEX_TIME_SCALE", "0.25");
    EXPECT_EXIT(std::exit(Scaled(1000ms) == 250ms ? 0 : 1), testing::ExitedWithCode(0), "");
    SetVariable("KORVEX_TIME_SCALE", "fast");
    EXPECT_EXIT(std::exit(Scaled(1ms).count() > 0 ? 0 : 2), testing::ExitedWithCode(1),
                "KORVEX_TIME_SCALE: \"fast\" is not a number above 0");
    RemoveVariable("KORVEX_TIME_SCALE");
}
#endif

TEST(MutexRelease, GivesTheMutexUpForAScope) {
    Mutex mutex;
    int turns = 0;
    MutexGuard guard(mutex);
    {
        MutexRelease release(mutex);
        std::thread([&] {
            MutexGuard other(mutex);
            ++turns;
        }).join();
    }
    std::thread waiter([&] {
        MutexGuard other(mutex);
        ++turns;
    });
    EXPECT_EQ(turns, 1) << "the mutex is held again";
    {
        MutexRelease release(mutex);
        waiter.join();
    }
    EXPECT_EQ(turns, 2);
}

TEST(Thread, JoinsInItsDestructor) {
    std::atomic<bool> ended{false};
    {
        Thread thread;
        EXPECT_EQ(thread.Handle(), nullptr);
        ASSERT_TRUE(thread.Start([&] {
            SleepFor(20ms);
            ended = true;
        }));
        EXPECT_NE(thread.Handle(), nullptr);
        EXPECT_FALSE(thread.Start([] {})) << "one thread at a time";
    }
    EXPECT_TRUE(ended);
}

TEST(Thread, CanBeStartedAgainAfterAJoin) {
    Thread thread;
    std::atomic<int> runs{0};
    for (int i = 0; i < 2; ++i) {
        ASSERT_TRUE(thread.Start([&] { ++runs; }));
        thread.Join();
        EXPECT_FALSE(thread.Started());
    }
    EXPECT_EQ(runs, 2);
}

TEST(ReadWithoutWaiting, GivesTheFirstBytes) {
    const TemporaryFolder folder;
    const auto file = folder.Path() / "file";
    const std::string text(200000, 'x');
    WriteText(file, text + "end");
    std::error_code error;
    EXPECT_EQ(ReadWithoutWaiting(file, 300000, error), text + "end");
    EXPECT_EQ(ReadWithoutWaiting(file, 200001, error), text + "e");
    EXPECT_EQ(ReadWithoutWaiting(file, 0, error), "");
    EXPECT_FALSE(error);
}

TEST(ReadWithoutWaiting, SaysWhatIsWrong) {
    const TemporaryFolder folder;
    std::error_code error;
    ReadWithoutWaiting(folder.Path() / "none", 10, error);
    EXPECT_EQ(error, std::errc::no_such_file_or_directory);
    ReadWithoutWaiting(folder.Path(), 10, error);
    EXPECT_EQ(error, std::errc::is_a_directory);
}

}  // namespace
}  // namespace Korvex3Sync::tests
