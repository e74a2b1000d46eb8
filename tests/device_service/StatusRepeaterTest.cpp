#include "device_service/core/StatusRepeater.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/os/Clock.h"
#include "platform/os/TimeScale.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using device_service::StatusRepeater;
using Status = std::pair<int, int>;
using Clock = std::chrono::steady_clock;

/// What a repeater has sent, and when.
class SentStatuses {
public:
    StatusRepeater::Send Sink() {
        return [this](unsigned char a, unsigned char b) {
            const std::lock_guard lock(m_mutex);
            m_sent.emplace_back(a, b);
            m_times.push_back(Clock::now());
        };
    }
    std::vector<Status> Sent() const {
        const std::lock_guard lock(m_mutex);
        return m_sent;
    }
    std::vector<Clock::time_point> Times() const {
        const std::lock_guard lock(m_mutex);
        return m_times;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<Status> m_sent;
    std::vector<Clock::time_point> m_times;
};

class StatusRepeaterTest : public testing::Test {
protected:
    StatusRepeaterTest() { EXPECT_TRUE(m_repeater.Start()); }

    /// Polls until a poll was repeated this often while it was fresh; a busy machine may need more
    /// than one.
    void PollUntilRepeated(const Status& status, std::size_t times) {
        std::size_t before = 0;
        const auto repeated = [&] { return m_sent.Sent().size() > before + times; };
        EXPECT_TRUE(support::WaitUntil([&] {
            before = m_sent.Sent().size();
            const auto polled = Clock::now();
            m_repeater.Polled(static_cast<unsigned char>(status.first),
                              static_cast<unsigned char>(status.second));
            EXPECT_TRUE(support::WaitUntil([&] {
                return repeated() || Clock::now() - polled > os::Scaled(std::chrono::seconds(1));
            }));
            return repeated();
        }));
    }

    SentStatuses m_sent;
    StatusRepeater m_repeater{m_sent.Sink()};
};

TEST_F(StatusRepeaterTest, HandsEachStatusOnAtOnce) {
    m_repeater.Begin();
    m_repeater.Polled(3, 4);
    EXPECT_EQ(m_sent.Sent().front(), Status(3, 4));
    m_repeater.Polled(255, 255);
    EXPECT_EQ(m_sent.Sent().back(), Status(255, 255));
}

TEST_F(StatusRepeaterTest, RepeatsTheLastOne) {
    const os::ScopedTimeScale fast(0.05);
    m_repeater.Begin();
    m_repeater.Polled(1, 2);
    PollUntilRepeated(Status(5, 6), 3);
    const auto sent = m_sent.Sent();
    EXPECT_EQ(sent.front(), Status(1, 2));
    EXPECT_THAT(std::vector(std::ranges::find(sent, Status(5, 6)), sent.end()),
                testing::Each(Status(5, 6)));
}

TEST_F(StatusRepeaterTest, FallsSilentWhenPollsAreNotFreshAnyMore) {
    const os::ScopedTimeScale fast(0.1);  // fresh for 100 ms
    m_repeater.Begin();
    const auto polled = Clock::now();
    m_repeater.Polled(1, 2);
    ASSERT_TRUE(support::WaitUntil(
        [&] { return Clock::now() - m_sent.Times().back() > std::chrono::milliseconds(500); }));
    EXPECT_LT(m_sent.Times().back() - polled, std::chrono::milliseconds(500));
    PollUntilRepeated(Status(3, 4), 2);
    EXPECT_EQ(m_sent.Sent().back(), Status(3, 4));
}

TEST_F(StatusRepeaterTest, BridgesThePollsThatANewCallbackSkips) {
    // In real time: fresh for 1000 ms, and for 1800 ms after another Begin. On a busy machine the
    // repeater may come too late for the time between, but not every time.
    EXPECT_TRUE(support::WaitUntil([&] {
        m_repeater.Begin();
        m_repeater.Polled(1, 2);
        m_repeater.Begin();
        const auto begun = Clock::now();
        EXPECT_TRUE(support::WaitUntil(
            [&] { return Clock::now() - begun > std::chrono::milliseconds(1800); }));
        return m_sent.Times().back() - begun > std::chrono::milliseconds(1400);
    }));
    EXPECT_EQ(m_sent.Sent().back(), Status(1, 2));
}

TEST_F(StatusRepeaterTest, SendsNothingAfterAStop) {
    const os::ScopedTimeScale fast(0.02);
    m_repeater.Begin();
    PollUntilRepeated(Status(1, 2), 2);
    m_repeater.Stop();
    const std::size_t stopped = m_sent.Sent().size();
    m_repeater.Polled(7, 7);                                         // a poll that was on its way
    const auto end = Clock::now() + std::chrono::milliseconds(100);  // a hundred repetitions
    ASSERT_TRUE(support::WaitUntil([&] { return Clock::now() > end; }));
    EXPECT_EQ(m_sent.Sent().size(), stopped);
    m_repeater.Begin();
    PollUntilRepeated(Status(8, 9), 1);
    EXPECT_EQ(m_sent.Sent()[stopped], Status(8, 9));
    EXPECT_EQ(m_sent.Sent().back(), Status(8, 9));
}

TEST_F(StatusRepeaterTest, ANewStartDoesNotRepeatWhatWasBefore) {
    m_repeater.Begin();
    m_repeater.Polled(1, 2);
    m_repeater.Stop();
    const std::size_t stopped = m_sent.Sent().size();
    m_repeater.Begin();
    const auto end = Clock::now() + std::chrono::milliseconds(200);  // four repetitions
    ASSERT_TRUE(support::WaitUntil([&] { return Clock::now() > end; }));
    EXPECT_EQ(m_sent.Sent().size(), stopped);
}

TEST_F(StatusRepeaterTest, IgnoresPollsBeforeItBegins) {
    m_repeater.Polled(1, 2);
    EXPECT_TRUE(m_sent.Sent().empty());
}

}  // namespace
}  // namespace Korvex3Sync::tests
