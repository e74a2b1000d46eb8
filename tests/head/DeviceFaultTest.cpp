#include "head/HeadSession.h"
#include "platform/os/TimeScale.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using virtual_head::FaultKind;

/// Devices that go or stop under a running scan. TroubleTests.cpp has those that come back.
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

TEST_F(DeviceFaults, AStoppedCameraIsStartedByAReconnection) {
    Order(FaultKind::CameraStop);
    const auto lost = Head().Counts().mono.lost;
    ASSERT_TRUE(support::WaitUntil([&] { return Head().Counts().mono.lost >= lost + 10; }));
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
}  // namespace Korvex3Sync::tests
