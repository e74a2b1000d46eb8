#include <algorithm>
#include <future>
#include <string>

#include "head/CallbackSession.h"
#include "support/LogCapture.h"

namespace Korvex3Sync::tests {
namespace {

/// Long enough for a call that does not wait to return; a call that waits is never late for it.
constexpr std::chrono::milliseconds kMoment{50};

class CallbackWaits : public CallbackSession {
protected:
    /// Starts the call on another thread and proves that it returns when the gate opens, and not
    /// before the callback that is kept there is over. The gate opens once this record is logged.
    void ExpectToWaitForTheCallback(const std::function<RETSTATUS()>& call,
                                    const std::string& record) {
        ASSERT_TRUE(m_gate.WaitUntilEntered());
        const support::LogCapture log;
        auto result = std::async(std::launch::async, [&] {
            const RETSTATUS status = call();
            EXPECT_TRUE(m_gate.Left()) << "it did not wait";
            return status;
        });
        const bool waits = support::WaitUntil([&] {
            const auto records = log.Records();
            return std::any_of(records.begin(), records.end(), [&](const std::string& text) {
                return text.find(record) != std::string::npos;
            });
        });
        EXPECT_TRUE(waits) << record;
        EXPECT_EQ(result.wait_for(kMoment), std::future_status::timeout);
        m_gate.Open();
        ASSERT_EQ(result.wait_for(Called::kDeadline), std::future_status::ready);
        EXPECT_EQ(result.get(), STATUS_SUCCESS);
    }
};

TEST_F(CallbackWaits, EndingAScanCallbackWaitsForTheCallThatRuns) {
    ConnectSmallHead();
    Called scan(m_gate.AsAction());
    const EndedFirst ended(*this);
    SetScan(&scan);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
    ExpectToWaitForTheCallback([this] { return SetScan(nullptr); },
                               "SetScanCallBackFunction enter");
    // Frames that were waiting may still come before the setter has its turn, none after it.
    const std::size_t count = scan.Count();
    ASSERT_TRUE(support::WaitUntil([&] { return Statistics().setsWithoutCallback > 5; }));
    EXPECT_EQ(scan.Count(), count);
    TriggerOff();
}

TEST_F(CallbackWaits, EndingAStatusCallbackWaitsForTheCallThatRuns) {
    ConnectSmallHead();
    Called status(m_gate.AsAction());
    Called next;
    const EndedFirst ended(*this);
    SetStatus(&status);
    ExpectToWaitForTheCallback([this] { return SetStatus(nullptr); },
                               "SetStatusCallBackFunction enter");
    // Another poll may still come before the setter has its turn, none after it.
    const std::size_t count = status.Count();
    SetStatus(&next);
    ASSERT_TRUE(next.WaitFor(1));
    EXPECT_EQ(status.Count(), count);
}

TEST_F(CallbackWaits, ClosingTheCamerasWaitsForTheScanCallbackThatRunsAndNoOtherComes) {
    ConnectSmallHead();
    Called scan(m_gate.AsAction());
    const EndedFirst ended(*this);
    SetScan(&scan);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
    ExpectToWaitForTheCallback([this] { return CloseDeviceCamera(m_handle); },
                               "CloseDeviceCamera enter");
    const std::size_t count = scan.Count();
    const auto triggers = Head().Clock().Triggers();
    ASSERT_TRUE(support::WaitUntil([&] { return Head().Clock().Triggers() > triggers + 10; }));
    EXPECT_EQ(scan.Count(), count);
}

TEST_F(CallbackWaits, ReconnectingWaitsForTheScanCallbackThatRunsAndTheScanGoesOn) {
    ConnectSmallHead();
    Called scan(m_gate.AsAction());
    Called status;
    const EndedFirst ended(*this);
    SetScan(&scan);
    SetStatus(&status);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
    ExpectToWaitForTheCallback([this] { return ReconnectDevice(m_handle); },
                               "ReconnectDevice enter");
    EXPECT_TRUE(scan.WaitFor(scan.Count() + 10));
    EXPECT_TRUE(status.WaitFor(status.Count() + 2)) << "the polls go on";
}

TEST_F(CallbackWaits, DisconnectingWaitsForTheScanCallbackThatRunsAndNoOtherComes) {
    ConnectSmallHead();
    Called scan(m_gate.AsAction());
    const EndedFirst ended(*this);
    SetScan(&scan);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
    // From this record on the grab thread is told to end.
    ExpectToWaitForTheCallback([this] { return DisConnectDevice(m_handle); },
                               "PhysicalCameraThread: WaitForSingleObject");
    EXPECT_EQ(scan.Count(), 1u) << "the grab thread ends after the frame that it handles";
    EXPECT_EQ(m_handle, nullptr);
}

TEST_F(CallbackWaits, DisconnectingWaitsForTheStatusCallbackThatRuns) {
    ConnectSmallHead();
    Called status(m_gate.AsAction());
    const EndedFirst ended(*this);
    SetStatus(&status);
    ExpectToWaitForTheCallback([this] { return DisConnectDevice(m_handle); },
                               "DisConnectDevice hSync=");
    EXPECT_EQ(m_handle, nullptr);
}

}  // namespace
}  // namespace Korvex3Sync::tests
