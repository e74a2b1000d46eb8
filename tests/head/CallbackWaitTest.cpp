#include "head/CallbackSession.h"
#include "support/BlockingCall.h"

namespace Korvex3Sync::tests {
namespace {

class CallbackWaits : public CallbackSession {
protected:
    /// Starts the call on another thread and proves that it returns when the gate opens, and not
    /// before the callback that is kept there is over. The gate opens once the call is blocked.
    void ExpectToWaitForTheCallback(const std::function<RETSTATUS()>& call) {
        ASSERT_TRUE(m_gate.WaitUntilEntered());
        RETSTATUS status = STATUS_FAILED;
        bool over = false;
        const support::BlockingCall waiting([&] {
            status = call();
            over = m_gate.Left();
        });
        EXPECT_TRUE(waiting.WaitUntilBlocked()) << "it does not wait";
        m_gate.Open();
        ASSERT_TRUE(waiting.WaitUntilReturned());
        EXPECT_TRUE(over) << "it did not wait for the callback";
        EXPECT_EQ(status, STATUS_SUCCESS);
    }
};

TEST_F(CallbackWaits, EndingAScanCallbackWaitsForTheCallThatRuns) {
    ConnectSmallHead();
    Called scan(m_gate.AsAction());
    const EndedFirst ended(*this);
    SetScan(&scan);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
    ExpectToWaitForTheCallback([this] { return SetScan(nullptr); });
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
    ExpectToWaitForTheCallback([this] { return SetStatus(nullptr); });
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
    ExpectToWaitForTheCallback([this] { return CloseDeviceCamera(m_handle); });
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
    ExpectToWaitForTheCallback([this] { return ReconnectDevice(m_handle); });
    EXPECT_TRUE(scan.WaitFor(scan.Count() + 10));
    EXPECT_TRUE(status.WaitFor(status.Count() + 2)) << "the polls go on";
}

TEST_F(CallbackWaits, DisconnectingWaitsForTheScanCallbackThatRunsAndNoOtherComes) {
    ConnectSmallHead();
    Called scan(m_gate.AsAction());
    const EndedFirst ended(*this);
    SetScan(&scan);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
    // The disconnect asks the grab thread to end before it waits for it.
    ExpectToWaitForTheCallback([this] { return DisConnectDevice(m_handle); });
    EXPECT_EQ(scan.Count(), 1u) << "the grab thread ends after the frame that it handles";
    EXPECT_EQ(m_handle, nullptr);
}

TEST_F(CallbackWaits, DisconnectingWaitsForTheStatusCallbackThatRuns) {
    ConnectSmallHead();
    Called status(m_gate.AsAction());
    const EndedFirst ended(*this);
    SetStatus(&status);
    ExpectToWaitForTheCallback([this] { return DisConnectDevice(m_handle); });
    EXPECT_EQ(m_handle, nullptr);
}

}  // namespace
}  // namespace Korvex3Sync::tests
