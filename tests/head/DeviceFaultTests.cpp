#include <atomic>

#include "head/HeadSession.h"
#include "platform/os/Event.h"
#include "platform/os/TimeScale.h"

namespace Korvex3Sync {
namespace {

using virtual_head::FaultKind;

constexpr std::chrono::milliseconds kPatience{600000};

/// Devices that go, stay silent and come back, under a running scan.
class DeviceFaults : public HeadSession {
protected:
    void SetUp() override {
        Request(SmallHead());
        ASSERT_EQ(Connect(), STATUS_SUCCESS);
        ASSERT_EQ(SetScanCallBackFunction(m_handle, &SetCollector::Receive, &m_sets),
                  STATUS_SUCCESS);
        ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
        ASSERT_TRUE(m_sets.WaitFor(5));
    }
    ~DeviceFaults() override {
        DisConnectDevice(m_handle);  // before the collector goes
    }

    void Order(FaultKind kind) {
        virtual_head::FaultOrder order;
        order.kind = kind;
        ASSERT_TRUE(Head().GetFaults().Order(order)) << virtual_head::Name(kind);
    }
    bool ScanGoesOn() { return m_sets.WaitFor(m_sets.Count() + 20); }

    os::ScopedTimeScale m_scale{0.05};
    SetCollector m_sets{[](const ImageSet&, std::size_t) {}};
};

TEST_F(DeviceFaults, ABoardThatCameBackIsReconnectedWithItsSettings) {
    ASSERT_EQ(SetProjectorBrightness(m_handle, 77), STATUS_SUCCESS);
    Order(FaultKind::BoardVanish);
    EXPECT_EQ(SetProjectorBrightness(m_handle, 55), STATUS_FAILED);
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_FAILED) << "it is still gone";
    Order(FaultKind::BoardReturn);
    EXPECT_EQ(Head().Board().State().projectorBrightness, 10);
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_EQ(Head().Board().State().projectorBrightness, 55) << "what was asked for last";
    EXPECT_TRUE(Head().Board().State().heartbeat);
    EXPECT_TRUE(ScanGoesOn());
}

TEST_F(DeviceFaults, AVanishedBoardIsReportedByTheStatusCallback) {
    struct Seen {
        os::Event lost;
        os::Event good;
    } seen;
    ASSERT_EQ(SetStatusCallBackFunction(
                  m_handle,
                  [](const void* const& context, const unsigned char& first,
                     const unsigned char& second) {
                      auto* const report = static_cast<Seen*>(const_cast<void*>(context));
                      (first == 255 && second == 255 ? report->lost : report->good).Set();
                  },
                  &seen),
              STATUS_SUCCESS);
    ASSERT_EQ(seen.good.Wait(kPatience), os::WaitResult::Signalled);
    Order(FaultKind::BoardVanish);
    EXPECT_EQ(seen.lost.Wait(kPatience), os::WaitResult::Signalled);
    Order(FaultKind::BoardReturn);
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
    seen.good.Reset();
    EXPECT_EQ(seen.good.Wait(kPatience), os::WaitResult::Signalled);
    EXPECT_TRUE(ScanGoesOn());
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);  // before what it reports to goes
}

TEST_F(DeviceFaults, AMuteBoardIsNotReconnectedUntilItAnswers) {
    Order(FaultKind::BoardMute);
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_FAILED);
    Order(FaultKind::BoardAnswer);
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_TRUE(ScanGoesOn());
}

TEST_F(DeviceFaults, ACameraThatCameBackIsReopenedInPlace) {
    ASSERT_EQ(SetCameraExposureAndGain(m_handle, 1, 8.5, 3), STATUS_SUCCESS);
    Order(FaultKind::CameraVanish);
    double exposure = 0.0;
    int gain = 0;
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS) << "the board is what counts";
    Order(FaultKind::CameraReturn);
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_TRUE(ScanGoesOn());
    EXPECT_EQ(GetCameraExposureAndGain(m_handle, 1, exposure, gain), STATUS_SUCCESS);
    EXPECT_EQ(exposure, 8.5);
    EXPECT_EQ(gain, 3);
}

TEST_F(DeviceFaults, AStoppedCameraIsStartedByAReconnection) {
    Order(FaultKind::CameraStop);
    const auto lost = Head().Counts().mono.lost;
    while (Head().Counts().mono.lost < lost + 10) {
        std::this_thread::yield();  // the test's own limit ends this
    }
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_TRUE(ScanGoesOn());
}

TEST_F(DeviceFaults, NothingThatIsGoneKeepsAConnectionFromClosing) {
    Order(FaultKind::CameraVanish);
    Order(FaultKind::BoardVanish);
    EXPECT_EQ(TriggerOff(), STATUS_FAILED);
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_EQ(m_handle, nullptr);
}

}  // namespace
}  // namespace Korvex3Sync
