#include <gmock/gmock.h>

#include <atomic>
#include <cstring>

#include "head/HeadSession.h"
#include "platform/os/Event.h"
#include "platform/os/TimeScale.h"
#include "virtual_head/Request.h"

namespace Korvex3Sync::tests {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

class ConnectedHead : public HeadSession {
protected:
    std::vector<std::string> Journal(const std::vector<std::string>& calls = {}) {
        return Head().GetJournal().Texts(calls);
    }
};

TEST_F(ConnectedHead, DiscoveryListsTheSharedCameraOnceForEachSensor) {
    Request(SmallHead());
    std::vector<char*> serials;
    std::vector<int> widths;
    std::vector<int> heights;
    std::vector<bool> colors;
    int count = 0;
    EXPECT_EQ(GetCamerasInformation("KV00", serials, widths, heights, colors, count),
              STATUS_SUCCESS);
    EXPECT_EQ(count, 2);
    ASSERT_EQ(serials.size(), 2u);
    EXPECT_STREQ(serials[0], "KV00A1001");
    EXPECT_STREQ(serials[1], "KV00A1001");
    EXPECT_EQ(widths, (std::vector<int>{64, 64}));
    EXPECT_EQ(heights, (std::vector<int>{32, 32}));
    EXPECT_EQ(colors, (std::vector<bool>{true, true}));
    for (char* serial : serials) {
        delete[] serial;
    }
    EXPECT_EQ(GetCameraCount("KV00", count), STATUS_SUCCESS);
    EXPECT_EQ(count, 2);
}

TEST_F(ConnectedHead, WithoutARequestNothingIsFound) {
    virtual_head::WithdrawVirtualHead();
    int count = 5;
    EXPECT_EQ(GetCameraCount("KV00", count), STATUS_SUCCESS);
    EXPECT_EQ(count, 0);
    bool onU3 = false;
    EXPECT_EQ(IsConnectedOnU3("", onU3), STATUS_FAILED);
    std::string version;
    EXPECT_EQ(GetFirewareVersion("", version), STATUS_FAILED);
    std::string serial = "KV00A1001";
    EXPECT_EQ(
        ConnectDevice("KV00", "", {serial.data(), serial.data()}, {64, 64}, {32, 32}, m_handle),
        STATUS_PROJECTOR);
}

TEST_F(ConnectedHead, TheUsbSpeedIsThatOfTheHead) {
    for (int speed : {1, 2, 3, 4}) {
        auto description = SmallHead();
        description.usbSpeed = speed;
        Request(description);
        bool onU3 = speed != 4;
        EXPECT_EQ(IsConnectedOnU3("", onU3), STATUS_SUCCESS);
        EXPECT_EQ(onU3, speed == 4) << speed;
    }
}

TEST_F(ConnectedHead, ABoardOfAnotherSerialDoesNotConnect) {
    Request(SmallHead());
    std::string serial = "KV00A1001";
    const std::vector<char*> serials{serial.data(), serial.data()};
    EXPECT_EQ(ConnectDevice("KV00", "nobody", serials, {64, 64}, {32, 32}, m_handle),
              STATUS_PROJECTOR);
    EXPECT_EQ(ConnectDevice("KV00", "VH3267-0001", serials, {64, 64}, {32, 32}, m_handle),
              STATUS_SUCCESS);
}

TEST_F(ConnectedHead, ACameraOfAnotherSerialOrSizeDoesNotConnectAndTheBoardIsClosedAgain) {
    Request(SmallHead());
    std::string other = "KV00B7";
    EXPECT_EQ(ConnectDevice("KV00", "", {other.data()}, {64}, {32}, m_handle), STATUS_CAMERA);
    std::string serial = "KV00A1001";
    EXPECT_EQ(ConnectDevice("KV00", "", {serial.data()}, {65}, {32}, m_handle), STATUS_CAMERA);
    EXPECT_EQ(ConnectDevice("KV00", "", {serial.data()}, {-1}, {-1}, m_handle), STATUS_CAMERA);
    EXPECT_EQ(m_handle, nullptr);
    const auto boards = Journal({"zr3DInitHidDev", "zr3DExitHidDev"});
    EXPECT_EQ(boards.size(), 6u) << "each open has its close";
}

TEST_F(ConnectedHead, FaultsOfTheDevicesBecomeTheirStatus) {
    Request(SmallHead());
    ASSERT_TRUE(Head().GetFaults().Fail("zr3DInitHidDev", 1));
    EXPECT_EQ(Connect(), STATUS_PROJECTOR);
    ASSERT_TRUE(Head().GetFaults().Fail("CreateCamera", 1));
    EXPECT_EQ(Connect(), STATUS_PARAMETER) << "discovery found nothing to connect";
    ASSERT_TRUE(Head().GetFaults().Fail("StartCamera", 1));
    EXPECT_EQ(Connect(), STATUS_SUCCESS) << "a camera that does not start gives no frames";
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    std::string serial = "KV00A1001";
    ASSERT_TRUE(Head().GetFaults().Fail("OpenCamera", 1));
    EXPECT_EQ(ConnectDevice("KV00", "", {serial.data()}, {64}, {32}, m_handle), STATUS_CAMERA);
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    ASSERT_TRUE(Head().GetFaults().Fail("zr3DProject", 1));
    EXPECT_EQ(Project(m_handle, PROJECT_PATTERN_1), STATUS_FAILED);
    EXPECT_EQ(Project(m_handle, PROJECT_PATTERN_1), STATUS_SUCCESS);
}

TEST_F(ConnectedHead, EverySettingReachesTheBoardAndIsReadBack) {
    Request(SmallHead());
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    EXPECT_EQ(SetLaserLineDutioRatio(m_handle, 61), STATUS_SUCCESS);
    EXPECT_EQ(SetProjectDutioRatio(m_handle, 62), STATUS_SUCCESS);
    EXPECT_EQ(SetIRLaserDutioRatio(m_handle, 63), STATUS_SUCCESS);
    EXPECT_EQ(SetStrobeDutioRatio(m_handle, -1, 30, -1), STATUS_SUCCESS);
    EXPECT_EQ(SetStrobeWorkTime(m_handle, 301, 302), STATUS_SUCCESS);
    EXPECT_EQ(SetLaserLineWorkTime(m_handle, 303), STATUS_SUCCESS);
    EXPECT_EQ(SetProjectWorkTime(m_handle, 304), STATUS_SUCCESS);
    EXPECT_EQ(SetIRLaserWorkTime(m_handle, 305), STATUS_SUCCESS);
    EXPECT_EQ(SetProjectorBrightness(m_handle, 77), STATUS_SUCCESS);
    EXPECT_EQ(SetVideoTriggerPeriod(m_handle, 9), STATUS_SUCCESS);
    EXPECT_EQ(SetDistanceIndicate(m_handle, DISTANCE_STATUS_2), STATUS_SUCCESS);
    EXPECT_EQ(EnableBlueLaser(m_handle, LASER_WORK_MODE_2, true), STATUS_SUCCESS);
    EXPECT_EQ(SetIRLaserBrightnessLevel(m_handle, 6), STATUS_SUCCESS);
    EXPECT_EQ(Project(m_handle, PROJECT_PATTERN_2), STATUS_SUCCESS);
    EXPECT_EQ(SetStrobeControlledByTrigger(m_handle, CONTROL_ROUTE_0, STROBE_STATE_3),
              STATUS_SUCCESS);
    const auto state = Head().Board().State();
    EXPECT_EQ(state.laserLineDuty, 61);
    EXPECT_EQ(state.strobeDuty, (std::array<int, 3>{100, 30, 100}));
    EXPECT_EQ(state.distanceState, 3);
    EXPECT_TRUE(state.laserEnable);
    EXPECT_EQ(state.laserMode, 2);
    EXPECT_EQ(state.irLaserLevel, 6);
    EXPECT_EQ(state.projectType, 2);
    EXPECT_EQ(state.strobeRoute, 0);
    EXPECT_EQ(state.strobeState, 3);
    int a = 0;
    int b = 0;
    int c = 0;
    EXPECT_EQ(GetLaserLineDutioRatio(m_handle, a), STATUS_SUCCESS);
    EXPECT_EQ(a, 61);
    GetProjectDutioRatio(m_handle, a);
    EXPECT_EQ(a, 62);
    GetIRLaserDutioRatio(m_handle, a);
    EXPECT_EQ(a, 63);
    GetStrobeDutioRatio(m_handle, a, b, c);
    EXPECT_THAT((std::vector<int>{a, b, c}), ElementsAre(100, 30, 100));
    GetStrobeWorkTime(m_handle, a, b);
    EXPECT_THAT((std::vector<int>{a, b}), ElementsAre(301, 302));
    GetLaserLineWorkTime(m_handle, a);
    EXPECT_EQ(a, 303);
    GetProjectWorkTime(m_handle, a);
    EXPECT_EQ(a, 304);
    GetIRLaserWorkTime(m_handle, a);
    EXPECT_EQ(a, 305);
    GetProjectorBrightness(m_handle, a);
    EXPECT_EQ(a, 77);
    GetVideoTriggerPeriod(m_handle, a);
    EXPECT_EQ(a, 9);
}

TEST_F(ConnectedHead, UserMemoryKeepsEveryByte) {
    Request(SmallHead());
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes.push_back(static_cast<char>(byte));
    }
    EXPECT_EQ(WriteUserInfomation(m_handle, 15, bytes.data(), 256), STATUS_SUCCESS);
    char page[256] = {};
    char* memory = page;
    EXPECT_EQ(ReadUserInfomation(m_handle, 15, memory), STATUS_SUCCESS);
    EXPECT_EQ(std::memcmp(page, bytes.data(), 256), 0);
    EXPECT_EQ(WriteUserInfomation(m_handle, 16, bytes.data(), 1), STATUS_FAILED);
    EXPECT_EQ(WriteUserInfomation(m_handle, 0, nullptr, 5), STATUS_FAILED);
    EXPECT_EQ(ReadUserInfomation(m_handle, -1, memory), STATUS_FAILED);
}

TEST_F(ConnectedHead, TheFirmwareIsReadWithAndWithoutAConnection) {
    Request(SmallHead());
    std::string version;
    EXPECT_EQ(GetFirewareVersion("", version), STATUS_SUCCESS);
    EXPECT_EQ(version, "1.4.0");
    version.clear();
    EXPECT_EQ(GetFirewareVersion(nullptr, "KV00", "VH3267-0001", version), STATUS_SUCCESS);
    EXPECT_EQ(version, "1.4.0");
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    version.clear();
    EXPECT_EQ(GetFirewareVersion(m_handle, nullptr, nullptr, version), STATUS_SUCCESS);
    EXPECT_EQ(version, "1.4.0");
}

TEST_F(ConnectedHead, StatusReportsCarryTheBoardsBytesCrossedOver) {
    os::ScopedTimeScale scale(0.05);
    Request(SmallHead());
    Head().Board().SetStatus(12, 34);
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    struct Seen {
        os::Event event;
        std::atomic<int> statusA{0};
        std::atomic<int> statusB{0};
    } seen;
    ASSERT_EQ(SetStatusCallBackFunction(
                  m_handle,
                  [](const void* const& context, const unsigned char& statusA,
                     const unsigned char& statusB) {
                      auto* const report = static_cast<Seen*>(const_cast<void*>(context));
                      report->statusA = statusA;
                      report->statusB = statusB;
                      report->event.Set();
                  },
                  &seen),
              STATUS_SUCCESS);
    ASSERT_EQ(seen.event.Wait(std::chrono::milliseconds(600000)), os::WaitResult::Signalled);
    EXPECT_EQ(seen.statusA, 34);
    EXPECT_EQ(seen.statusB, 12);
    EXPECT_TRUE(Head().Board().State().heartbeat);
    DisConnectDevice(m_handle);
    EXPECT_FALSE(Head().Board().State().heartbeat);
}

TEST_F(ConnectedHead, ConnectAndDisconnectTouchTheDevicesInTheirOrder) {
    Request(SmallHead());
    std::string serial = "KV00A1001";
    ASSERT_EQ(
        ConnectDevice("KV00", "", {serial.data(), serial.data()}, {64, 64}, {32, 32}, m_handle),
        STATUS_SUCCESS);
    DisConnectDevice(m_handle);
    EXPECT_THAT(
        Journal({"zr3DInitHidDev", "CreateCamera", "GetDeviceTotal", "OpenCamera", "StartCamera",
                 "zr3DQueryCurrentStatus", "CloseCamera", "ReleaseCamera", "zr3DProject",
                 "zr3DExitHidDev"}),
        ElementsAre("zr3DInitHidDev(3267, 5752, ) = true", "CreateCamera(KV00A1001) = 0",
                    "GetDeviceTotal() = 0", "OpenCamera(KV00A1001, 64, 32) = 0",
                    "StartCamera(0) = 0", "zr3DQueryCurrentStatus() = true", "CloseCamera() = 0",
                    "ReleaseCamera() = 0", "zr3DProject(0) = true", "zr3DExitHidDev() = true"));
}

TEST_F(ConnectedHead, AHeadThatWasReplacedFailsCleanly) {
    Request(SmallHead());
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    Request(SmallHead());
    EXPECT_EQ(Project(m_handle, PROJECT_PATTERN_1), STATUS_FAILED);
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
}

TEST_F(ConnectedHead, ABoardThatHangsDelaysACallButNeverKeepsIt) {
    Request(SmallHead());
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    ASSERT_TRUE(Head().GetFaults().Hang("zr3DProject"));
    EXPECT_EQ(Project(m_handle, PROJECT_PATTERN_1), STATUS_FAILED) << "the reply limit passed";
    Head().GetFaults().ReleaseHangs();
    EXPECT_EQ(Project(m_handle, PROJECT_PATTERN_1), STATUS_SUCCESS);
}

TEST_F(ConnectedHead, ASlowBoardHoldsUpADisconnectForItsReplyLimitsOnly) {
    Request(SmallHead());
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    // Longer than a test may take.
    for (const char* const call : {"zr3DEnableHeartbeat", "zr3DProject", "zr3DExitHidDev"}) {
        ASSERT_TRUE(Head().GetFaults().Slow(call, std::chrono::minutes(60), 1));
    }
    bool on = true;
    EXPECT_EQ(EnableHeartbeat(m_handle, on), STATUS_FAILED);
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    Head().GetFaults().Clear();
}

}  // namespace
}  // namespace Korvex3Sync::tests
