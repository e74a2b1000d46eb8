#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <utility>
#include <vector>

#include "platform/os/Event.h"
#include "platform/os/TimeScale.h"
#include "support/BlockingCall.h"
#include "support/Deadline.h"
#include "support/Golden.h"
#include "sync/Head.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using support::MatchesGolden;
using support::Output;
using Pairs = std::vector<std::pair<int, int>>;

/// What a status callback was told, and how many polls there had been at the first call.
class Reports {
public:
    static void Receive(const void* const& context, const unsigned char& statusA,
                        const unsigned char& statusB) {
        auto* const reports = static_cast<Reports*>(const_cast<void*>(context));
        if (reports->action) {
            reports->action();
        }
        std::lock_guard lock(reports->m_mutex);
        if (reports->m_seen.empty()) {
            reports->pollsAtFirst = Recorder::Get().Count("zr3DQueryCurrentStatus");
        }
        reports->m_seen.emplace_back(statusA, statusB);
        reports->m_changed.notify_all();
    }
    bool WaitFor(std::size_t count) {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, kDeadline, [&] { return m_seen.size() >= count; });
    }
    Pairs Seen() {
        std::lock_guard lock(m_mutex);
        return m_seen;
    }

    std::function<void()> action;
    std::uint64_t pollsAtFirst = 0;

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    Pairs m_seen;
};

class StatusThread : public testing::Test {
protected:
    StatusThread() { Recorder::Get().Reset(); }
    RETSTATUS Set(StatusCallBackFunction callback, void* context) {
        return m_poller.SetStatusCallBackFunction(callback, context);
    }
    RETSTATUS Report() { return Set(&Reports::Receive, &m_reports); }
    /// Sets the callback and compares what that logs with the section.
    void SetSays(const std::string& section, StatusCallBackFunction callback, void* context) {
        Output output;
        EXPECT_EQ(Set(callback, context), STATUS_SUCCESS);
        EXPECT_TRUE(MatchesGolden("SetStatusCallBackFunction", section, output.End()));
    }
    void Open() { ASSERT_EQ(m_board.InitProjector(""), STATUS_SUCCESS); }
    bool WaitForPolls(std::uint64_t more) {
        return Recorder::Get().WaitForCount("zr3DQueryCurrentStatus",
                                            Recorder::Get().Count("zr3DQueryCurrentStatus") + more);
    }

    os::ScopedTimeScale m_scale{0.05};
    Reports m_reports;
    os::CriticalSection m_device;
    TriggerStarts m_starts;
    BoardSession m_board{m_device, m_starts};
    StatusPoller m_poller{m_device, m_board};
};

TEST_F(StatusThread, TheFirstCallComesOnTheFifthPollWithTheBytesCrossedOver) {
    Recorder::Get().SetValue("first", 17);
    Recorder::Get().SetValue("second", 34);
    Open();
    SetSays("first callback", &Reports::Receive, &m_reports);
    ASSERT_TRUE(m_reports.WaitFor(2));
    EXPECT_EQ(m_reports.pollsAtFirst, 5u);
    EXPECT_EQ(m_reports.Seen().front(), std::make_pair(34, 17));
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DEnableHeartbeat(B1, 1)");
}

TEST_F(StatusThread, EveryChangeOfTheCallbackSkipsFourPollsAgain) {
    Open();
    Report();
    ASSERT_TRUE(m_reports.WaitFor(1));
    Reports other;
    const auto polls = Recorder::Get().Count("zr3DQueryCurrentStatus");
    SetSays("another callback", &Reports::Receive, &other);
    ASSERT_TRUE(other.WaitFor(1));
    // The poll that was under way at the change may be the first of the four.
    EXPECT_GE(other.pollsAtFirst, polls + 4);
    Set(nullptr, nullptr);
}

TEST_F(StatusThread, ANullCallbackSwitchesTheHeartbeatOffAndSilencesTheThread) {
    Open();
    Report();
    ASSERT_TRUE(m_reports.WaitFor(1));
    SetSays("null callback", nullptr, &m_reports);
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DEnableHeartbeat(B1, 0)");
    const auto polls = Recorder::Get().Count("zr3DQueryCurrentStatus(B1)");
    const auto calls = m_reports.Seen().size();
    {
        // For as long as the thread of another board takes for ten polls.
        Reports others;
        BoardSession board(m_device, m_starts);
        StatusPoller other(m_device, board);
        ASSERT_EQ(board.InitProjector(""), STATUS_SUCCESS);
        other.SetStatusCallBackFunction(&Reports::Receive, &others);
        ASSERT_TRUE(Recorder::Get().WaitForCount("zr3DQueryCurrentStatus(B2)", 10));
    }
    EXPECT_LE(Recorder::Get().Count("zr3DQueryCurrentStatus(B1)"), polls + 1)
        << "one poll may have been under way; then the board is left alone";
    EXPECT_EQ(m_reports.Seen().size(), calls) << "no call once the setter has returned";
    Report();
    EXPECT_TRUE(m_reports.WaitFor(calls + 1)) << "the thread was only silent";
}

TEST_F(StatusThread, ANullContextSwitchesTheHeartbeatOffThoughTheCallbackRuns) {
    Open();
    Set([](const void* const&, const unsigned char&, const unsigned char&) {}, nullptr);
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DEnableHeartbeat(B1, 1)")
        << "the first call switches it on whatever it is given";
    Set([](const void* const&, const unsigned char&, const unsigned char&) {}, nullptr);
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DEnableHeartbeat(B1, 0)");
    EXPECT_TRUE(WaitForPolls(2));
}

TEST_F(StatusThread, TheFirstCallStartsTheThreadEvenWithANullCallback) {
    Open();
    SetSays("first callback is null", nullptr, nullptr);
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DEnableHeartbeat(B1, 1)");
    SetSays("null callback", nullptr, nullptr);
}

TEST_F(StatusThread, WithoutABoardEveryReportIs255) {
    EXPECT_EQ(Report(), STATUS_SUCCESS);
    ASSERT_TRUE(m_reports.WaitFor(3));
    for (const auto& report : m_reports.Seen()) {
        EXPECT_EQ(report, std::make_pair(255, 255));
    }
    EXPECT_EQ(Recorder::Get().Count("zr3DQueryCurrentStatus"), 0u);
    EXPECT_EQ(Recorder::Get().Count("zr3DEnableHeartbeat"), 0u);
}

TEST_F(StatusThread, AFailedPollReports255AndMarksTheBoardLostUntilAGoodOne) {
    Recorder::Get().SetValue("first", 1);
    Open();
    Report();
    Recorder::Get().FailAlways("zr3DQueryCurrentStatus");
    ASSERT_TRUE(m_reports.WaitFor(1));
    ASSERT_TRUE(WaitForPolls(2));
    EXPECT_EQ(m_reports.Seen().back(), std::make_pair(255, 255));
    EXPECT_EQ(m_board.Project(PROJECT_PATTERN_1), STATUS_FAILED);
    Recorder::Get().FailAlways("zr3DQueryCurrentStatus", false);
    ASSERT_TRUE(WaitForPolls(3));
    EXPECT_EQ(m_board.Project(PROJECT_PATTERN_1), STATUS_SUCCESS);
}

TEST_F(StatusThread, ACallbackMayCallBoardOperations) {
    Open();
    m_reports.action = [&] {
        int period = 0;
        EXPECT_EQ(m_board.GetVideoTriggerPeriod(period), STATUS_SUCCESS);
    };
    Report();
    ASSERT_TRUE(m_reports.WaitFor(2));
    EXPECT_GE(Recorder::Get().Count("zr3DQueryTriggerPeriod"), 2u);
}

TEST_F(StatusThread, ACallbackMayPutAnotherInItsPlace) {
    Open();
    Reports other;
    m_reports.action = [&] { EXPECT_EQ(Set(&Reports::Receive, &other), STATUS_SUCCESS); };
    Report();
    ASSERT_TRUE(other.WaitFor(2));
    EXPECT_EQ(m_reports.Seen().size(), 1u);
    Set(nullptr, nullptr);
}

TEST_F(StatusThread, ACallbackThatThrowsLosesItsReportAndThePollsGoOn) {
    Output output(Output::Of::kOtherThreads);
    Open();
    m_reports.action = [thrown = false]() mutable {
        if (!std::exchange(thrown, true)) {
            throw std::runtime_error("the application's own mistake");
        }
    };
    Report();
    EXPECT_TRUE(m_reports.WaitFor(2));
    EXPECT_TRUE(MatchesGolden("StatusThreadFun", "the status callback throws", output.End()));
}

TEST_F(StatusThread, TheHeartbeatNeedsABoard) {
    EXPECT_EQ(m_board.EnableHeartbeat(true), STATUS_NOT_CONNECTED);
    Open();
    EXPECT_EQ(m_board.EnableHeartbeat(false), STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DEnableHeartbeat(B1, 0)");
    Recorder::Get().FailAlways("zr3DEnableHeartbeat");
    EXPECT_EQ(m_board.EnableHeartbeat(true), STATUS_FAILED);
    EXPECT_EQ(Report(), STATUS_SUCCESS) << "the setter never reports the heartbeat";
}

TEST_F(StatusThread, StaysAwayFromTheBoardUntilTheLastOneUnparksIt) {
    Open();
    Report();
    ASSERT_TRUE(m_reports.WaitFor(1));
    m_poller.Park();
    m_poller.Park();
    const auto polls = Recorder::Get().Count("zr3DQueryCurrentStatus(B1)");
    EXPECT_FALSE(m_poller.Unpark());
    {
        // For as long as the thread of another board takes for ten polls.
        Reports others;
        BoardSession board(m_device, m_starts);
        StatusPoller other(m_device, board);
        ASSERT_EQ(board.InitProjector(""), STATUS_SUCCESS);
        other.SetStatusCallBackFunction(&Reports::Receive, &others);
        ASSERT_TRUE(Recorder::Get().WaitForCount("zr3DQueryCurrentStatus(B2)", 10));
    }
    EXPECT_LE(Recorder::Get().Count("zr3DQueryCurrentStatus(B1)"), polls + 1)
        << "one may have been under way";
    EXPECT_TRUE(m_poller.Unpark());
    EXPECT_TRUE(WaitForPolls(2));
}

TEST_F(StatusThread, OfTwoFirstCallsAtTheSameTimeOneStartsTheThread) {
    Open();
    std::array<RETSTATUS, 2> results{};
    std::vector<std::unique_ptr<support::BlockingCall>> callers;
    m_device.Enter();
    for (RETSTATUS& result : results) {
        callers.push_back(
            std::make_unique<support::BlockingCall>([this, &result] { result = Report(); }));
        EXPECT_TRUE(callers.back()->WaitUntilBlocked());
    }
    m_device.Leave();
    callers.clear();
    EXPECT_EQ(results, (std::array{STATUS_SUCCESS, STATUS_SUCCESS}));
    EXPECT_TRUE(m_reports.WaitFor(2)) << "the thread runs";
    EXPECT_EQ(Recorder::Get().Count("zr3DEnableHeartbeat(B1, 1)"), 2u);
    Set(nullptr, nullptr);
}

TEST_F(StatusThread, ToldToEndWhileItWaitsForTheBoardLeavesItAlone) {
    std::atomic<int> thread{0};
    m_reports.action = [&] { thread = support::ThisThread(); };
    Open();
    Report();
    ASSERT_TRUE(m_reports.WaitFor(1));
    Output output(Output::Of::kOtherThreads);
    m_device.Enter();
    const auto polls = Recorder::Get().Count("zr3DQueryCurrentStatus");
    EXPECT_TRUE(support::WaitUntilBlocked(thread));
    const support::BlockingCall stopping([&] { m_poller.Stop(); });
    EXPECT_TRUE(stopping.WaitUntilBlocked());
    m_device.Leave();
    EXPECT_TRUE(stopping.WaitUntilReturned());
    EXPECT_EQ(Recorder::Get().Count("zr3DQueryCurrentStatus"), polls);
    EXPECT_TRUE(
        MatchesGolden("StatusThreadFun", "ends while it waits for the board", output.End()));
}

TEST(StatusThreadEnd, TheDestructorEndsTheThreadAtOnceAndSaysSo) {
    Recorder::Get().Reset();
    Reports reports;
    Output output(Output::Of::kOtherThreads);
    const auto begin = std::chrono::steady_clock::now();
    {
        os::ScopedTimeScale slow(1000);  // a poll period of 200 s: nobody may wait for it
        IManagerSync manager;
        ASSERT_EQ(manager.Board().InitProjector(""), STATUS_SUCCESS);
        manager.Status().SetStatusCallBackFunction(&Reports::Receive, &reports);
        ASSERT_TRUE(Recorder::Get().WaitForCount("zr3DQueryCurrentStatus", 1));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(100));
    EXPECT_TRUE(MatchesGolden("StatusThreadFun", "ends", output.End()));
}

TEST(StatusThreadEnd, TheDestructorLeavesACameraAloneThatTheCallbackUses) {
    Recorder::Get().Reset();
    const os::ScopedTimeScale fast(0.01);
    auto manager = std::make_unique<IManagerSync>();
    ASSERT_EQ(ConnectRecorded(*manager), STATUS_SUCCESS);
    Reports reports;
    reports.action = [&used = *manager, first = true]() mutable {
        double exposure = 0.0;
        int gain = 0;
        if (std::exchange(first, false)) {
            used.Cameras().GetCameraExposureAndGain(0, exposure, gain);
        }
    };
    os::Event inUse;
    os::Event open;
    Recorder::Get().OnCall("GetGain", [&] {
        inUse.Set();
        open.Wait();
    });
    manager->Status().SetStatusCallBackFunction(&Reports::Receive, &reports);
    inUse.Wait();
    const support::BlockingCall closing([&] { manager.reset(); });
    EXPECT_TRUE(closing.WaitUntilBlocked());
    EXPECT_EQ(Recorder::Get().Count("CloseCamera"), 0u);
    open.Set();
    EXPECT_TRUE(closing.WaitUntilReturned());
    EXPECT_EQ(Recorder::Get().Count("CloseCamera"), 1u);
}

}  // namespace
}  // namespace Korvex3Sync::tests
