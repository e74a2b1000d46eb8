#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <sstream>
#include <utility>

#include "interface/Connected.h"
#include "support/LogCapture.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using testing::HasSubstr;
using Calls = std::vector<std::string>;

constexpr char kEndRecord[] = "KorvexSyncControl: tmpBuf=End Function DisConnectDevice";

std::string Pointer(const void* pointer) {
    std::ostringstream text;
    text << pointer;
    return text.str();
}

class ConnectionExports : public Connected {
protected:
    support::LogCapture m_log;
};

TEST_F(ConnectionExports, ASuccessfulConnectGivesAHandleAndSaysSo) {
    EXPECT_EQ(Connect(), STATUS_SUCCESS);
    ASSERT_NE(m_handle, nullptr);
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: ConnectDevice enter"));
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: Success Connnect Device hSync=" + Pointer(m_handle)));
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: ConnectDevice leave"));
}

TEST_F(ConnectionExports, AFailedConnectLeavesTheHandleAndDestroysTheManager) {
    Recorder::Get().FailAlways("OpenCamera");
    int mine = 0;
    void* handle = &mine;
    std::string serial = "KV00R1";
    testing::internal::CaptureStdout();
    EXPECT_EQ(ConnectDevice("any", "BOARD", {serial.data()}, {8}, {4}, handle), STATUS_CAMERA);
    EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr("End Disconnect\n"));
    EXPECT_EQ(handle, &mine);
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: Connect Device Failed!"));
    EXPECT_TRUE(m_log.Has(kEndRecord));
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: ConnectDevice leave"));
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DExitHidDev(B1)");
}

TEST_F(ConnectionExports, AConnectThatRunsOutOfMemoryIsAFailedOne) {
    Recorder::Get().OnCall("StartCamera", [] { throw std::bad_alloc(); });
    EXPECT_EQ(Connect(), STATUS_FAILED);
    EXPECT_EQ(m_handle, nullptr);
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: Connect Device Failed!"));
    EXPECT_TRUE(m_log.Has(kEndRecord));
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: ConnectDevice leave"));
    EXPECT_EQ(Recorder::Get().Count("ReleaseCamera"), 1u);
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DExitHidDev(B1)");
}

TEST_F(ConnectionExports, BadInputIsAParameterErrorAndOpensNothing) {
    void* handle = nullptr;
    std::string serial = "A";
    EXPECT_EQ(ConnectDevice(nullptr, "", {serial.data()}, {8}, {4}, handle), STATUS_PARAMETER);
    EXPECT_EQ(ConnectDevice("any", nullptr, {serial.data()}, {8}, {4}, handle), STATUS_PARAMETER);
    EXPECT_EQ(ConnectDevice("any", "", {serial.data()}, {8, 8}, {4}, handle), STATUS_PARAMETER);
    EXPECT_EQ(ConnectDevice("any", "", {serial.data()}, {8}, {}, handle), STATUS_PARAMETER);
    EXPECT_EQ(Recorder::Get().Count("zr3DInitHidDev"), 0u);
    EXPECT_EQ(ConnectDevice("any", "", {}, {}, {}, handle), STATUS_PARAMETER);
    EXPECT_EQ(handle, nullptr);
}

TEST_F(ConnectionExports, SerialsOfTenThousandBytesAreRefusedLikeAnyUnknownOne) {
    void* handle = nullptr;
    std::string serial(10000, 's');
    EXPECT_EQ(ConnectDevice(serial.c_str(), serial.c_str(), {serial.data()}, {8}, {4}, handle),
              STATUS_CAMERA);
    EXPECT_EQ(handle, nullptr);
}

TEST_F(ConnectionExports, DisconnectNullsTheHandleAndASecondOneIsNotConnected) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    const std::string record = "KorvexSyncControl: DisConnectDevice hSync=" + Pointer(m_handle);
    testing::internal::CaptureStdout();
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr("End Disconnect\n"));
    EXPECT_EQ(m_handle, nullptr);
    EXPECT_TRUE(m_log.Has(record));
    EXPECT_TRUE(m_log.Has(kEndRecord));
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_NOT_CONNECTED);
}

TEST_F(ConnectionExports, InServiceModeConnectAndDisconnectNeedAClient) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    SwitchOnDeviceService(true);
    void* other = nullptr;
    std::string serial = "A";
    EXPECT_EQ(ConnectDevice("any", "", {serial.data()}, {8}, {4}, other), STATUS_NOT_CONNECTED);
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_NOT_CONNECTED);
    EXPECT_NE(m_handle, nullptr);
}

TEST_F(ConnectionExports, SeveralConnectionsStandSideBySide) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    void* const first = m_handle;
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    void* second = m_handle;
    m_handle = first;
    EXPECT_NE(first, second);
    EXPECT_EQ(DisConnectDevice(second), STATUS_SUCCESS);
    EXPECT_EQ(Project(m_handle, PROJECT_PATTERN_1), STATUS_SUCCESS);
}

TEST_F(ConnectionExports, ABoardResetWithoutAHandleRunsDirectInEitherMode) {
    for (bool service : {false, true}) {
        Recorder::Get().Reset();
        SwitchOnDeviceService(service);
        testing::internal::CaptureStdout();
        EXPECT_EQ(ReconnectDevice(nullptr, true, false), STATUS_SUCCESS);
        EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr("End Disconnect\n"));
        EXPECT_EQ(Recorder::Get().Calls(),
                  (Calls{"zr3DInitHidDev(null, 3267, 5752, )", "zr3DResetFPGA(B1)",
                         "zr3DProject(B1, 0)", "zr3DExitHidDev(B1)"}));
    }
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: ReconnectDevice enter"));
}

TEST_F(ConnectionExports, ABoardResetThroughAHandleIgnoresTheMode) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    SwitchOnDeviceService(true);
    EXPECT_EQ(ReconnectDevice(m_handle, true, true), STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DResetDevice(B1)");
}

TEST_F(ConnectionExports, TheFastFirmwareQueryNeedsASerialOnly) {
    std::string version = "before";
    EXPECT_EQ(GetFirewareVersion(nullptr, version), STATUS_PARAMETER);
    EXPECT_EQ(version, "before");
    SwitchOnDeviceService(true);
    EXPECT_EQ(GetFirewareVersion("SN", version), STATUS_SUCCESS);
    EXPECT_EQ(version, "9.8.7");
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: Firmware version: 9.8.7"));
    EXPECT_EQ(Recorder::Get().Calls(), Calls{"zr3DQueryFirmwareVersionFast(SN)"});
    Recorder::Get().FailAlways("zr3DQueryFirmwareVersionFast");
    EXPECT_EQ(GetFirewareVersion("SN", version), STATUS_FAILED);
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: zr3DQueryFirmwareVersionFast Failed"));
}

TEST_F(ConnectionExports, TheFirmwareQueryNeedsAHandleOrADeviceType) {
    std::string version;
    EXPECT_EQ(GetFirewareVersion(nullptr, nullptr, "SN", version), STATUS_NOT_CONNECTED);
    EXPECT_TRUE(Recorder::Get().Calls().empty());
    EXPECT_EQ(GetFirewareVersion(nullptr, "x", "SN", version), STATUS_SUCCESS);
    EXPECT_EQ(version, "1.2.3");
    EXPECT_EQ(Recorder::Get().Calls(), (Calls{"zr3DInitHidDev(null, 3267, 5752, SN)",
                                              "zr3DQueryProjectorFirewareVersion(B1)",
                                              "zr3DProject(B1, 0)", "zr3DExitHidDev(B1)"}));
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: versionString=1.2.3"));
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: GetFirewareVersion leave"));
}

TEST_F(ConnectionExports, TheFirmwareQueryInServiceModeNeedsAClient) {
    SwitchOnDeviceService(true);
    std::string version;
    EXPECT_EQ(GetFirewareVersion(nullptr, "x", "SN", version), STATUS_NOT_CONNECTED);
    EXPECT_TRUE(Recorder::Get().Calls().empty());
}

TEST_F(ConnectionExports, AFailedFirmwareQueryWithoutAHandleEndsInANullDisconnect) {
    Recorder::Get().FailAlways("zr3DInitHidDev");
    std::string version;
    EXPECT_EQ(GetFirewareVersion(nullptr, "x", "SN", version), STATUS_PROJECTOR);
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: Get FWVersion Failed"));
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: DisConnectDevice hSync=" + Pointer(nullptr)));
}

TEST_F(ConnectionExports, AFirmwareQueryThroughAHandleKeepsTheConnectionWhenItSucceeds) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    std::string version;
    EXPECT_EQ(GetFirewareVersion(m_handle, nullptr, nullptr, version), STATUS_SUCCESS);
    EXPECT_EQ(version, "1.2.3");
    EXPECT_EQ(Recorder::Get().Count("zr3DExitHidDev"), 0u);
}

TEST_F(ConnectionExports, AFailedFirmwareQueryThroughAHandleEndsTheConnection) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    void* const stale = std::exchange(m_handle, nullptr);  // must not be used again
    Recorder::Get().FailAlways("zr3DQueryProjectorFirewareVersion");
    std::string version;
    EXPECT_EQ(GetFirewareVersion(stale, nullptr, nullptr, version), STATUS_FAILED);
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DExitHidDev(B1)");
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: Get FWVersion Failed"));
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: DisConnectDevice hSync=" + Pointer(stale)));
    EXPECT_TRUE(m_log.Has(kEndRecord));
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: GetFirewareVersion leave"));
}

TEST_F(ConnectionExports, AFirmwareQueryThatRunsOutOfMemoryEndsTheConnectionToo) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    void* const stale = std::exchange(m_handle, nullptr);
    Recorder::Get().OnCall("zr3DQueryProjectorFirewareVersion", [] { throw std::bad_alloc(); });
    std::string version;
    EXPECT_EQ(GetFirewareVersion(stale, nullptr, nullptr, version), STATUS_FAILED);
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DExitHidDev(B1)");
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: DisConnectDevice hSync=" + Pointer(stale)));
    EXPECT_TRUE(m_log.Has("KorvexSyncControl: GetFirewareVersion leave"));
}

}  // namespace
}  // namespace Korvex3Sync::tests
