#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <utility>

#include "interface/Connected.h"
#include "support/Golden.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using Calls = std::vector<std::string>;

using support::MatchesGolden;
using support::Output;

class ConnectionExports : public Connected {};

TEST_F(ConnectionExports, ASuccessfulConnectGivesAHandleAndSaysSo) {
    Output output;
    EXPECT_EQ(Connect(), STATUS_SUCCESS);
    ASSERT_NE(m_handle, nullptr);
    output.Name(m_handle, "handle");
    EXPECT_TRUE(MatchesGolden("ConnectDevice", "connected", output.End()));
}

TEST_F(ConnectionExports, AFailedConnectLeavesTheHandleAndDestroysTheManager) {
    Recorder::Get().FailAlways("OpenCamera");
    int mine = 0;
    void* handle = &mine;
    std::string serial = "KV00R1";
    Output output;
    EXPECT_EQ(ConnectDevice("any", "BOARD", {serial.data()}, {8}, {4}, handle), STATUS_CAMERA);
    EXPECT_TRUE(MatchesGolden("ConnectDevice", "a camera does not open", output.End()));
    EXPECT_EQ(handle, &mine);
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DExitHidDev(B1)");
}

TEST_F(ConnectionExports, AConnectThatRunsOutOfMemoryIsAFailedOne) {
    Recorder::Get().OnCall("StartCamera", [] { throw std::bad_alloc(); });
    Output output;
    EXPECT_EQ(Connect(), STATUS_FAILED);
    EXPECT_TRUE(MatchesGolden("ConnectDevice", "out of memory", output.End()));
    EXPECT_EQ(m_handle, nullptr);
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
    Output output;
    output.Name(m_handle, "handle");
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_TRUE(MatchesGolden("DisConnectDevice", "connected", output.End()));
    EXPECT_EQ(m_handle, nullptr);
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_NOT_CONNECTED);
}

TEST_F(ConnectionExports, InServiceModeConnectAndDisconnectNeedAClient) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    SetServiceMode(true);
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
        SetServiceMode(service);
        Output output;
        EXPECT_EQ(ReconnectDevice(nullptr, true, false), STATUS_SUCCESS);
        EXPECT_TRUE(MatchesGolden("ReconnectDevice", "board reset without a handle", output.End()));
        EXPECT_EQ(Recorder::Get().Calls(),
                  (Calls{"zr3DInitHidDev(null, 3267, 5752, )", "zr3DResetFPGA(B1)",
                         "zr3DProject(B1, 0)", "zr3DExitHidDev(B1)"}));
    }
}

TEST_F(ConnectionExports, ABoardResetThroughAHandleIgnoresTheMode) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    SetServiceMode(true);
    EXPECT_EQ(ReconnectDevice(m_handle, true, true), STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DResetDevice(B1)");
}

TEST_F(ConnectionExports, TheFastFirmwareQueryNeedsASerialOnly) {
    std::string version = "before";
    EXPECT_EQ(GetFirewareVersion(nullptr, version), STATUS_PARAMETER);
    EXPECT_EQ(version, "before");
    SetServiceMode(true);
    Output output;
    EXPECT_EQ(GetFirewareVersion("SN", version), STATUS_SUCCESS);
    EXPECT_TRUE(MatchesGolden("GetFirewareVersion", "by serial", output.End()));
    EXPECT_EQ(version, "9.8.7");
    EXPECT_EQ(Recorder::Get().Calls(), Calls{"zr3DQueryFirmwareVersionFast(SN)"});
    Recorder::Get().FailAlways("zr3DQueryFirmwareVersionFast");
    Output failed;
    EXPECT_EQ(GetFirewareVersion("SN", version), STATUS_FAILED);
    EXPECT_TRUE(MatchesGolden("GetFirewareVersion", "by serial, failed", failed.End()));
}

TEST_F(ConnectionExports, TheFirmwareQueryNeedsAHandleOrADeviceType) {
    std::string version;
    EXPECT_EQ(GetFirewareVersion(nullptr, nullptr, "SN", version), STATUS_NOT_CONNECTED);
    EXPECT_TRUE(Recorder::Get().Calls().empty());
    Output output;
    EXPECT_EQ(GetFirewareVersion(nullptr, "x", "SN", version), STATUS_SUCCESS);
    EXPECT_TRUE(MatchesGolden("GetFirewareVersion", "by device type", output.End()));
    EXPECT_EQ(version, "1.2.3");
    EXPECT_EQ(Recorder::Get().Calls(), (Calls{"zr3DInitHidDev(null, 3267, 5752, SN)",
                                              "zr3DQueryProjectorFirewareVersion(B1)",
                                              "zr3DProject(B1, 0)", "zr3DExitHidDev(B1)"}));
}

TEST_F(ConnectionExports, TheFirmwareQueryInServiceModeNeedsAClient) {
    SetServiceMode(true);
    std::string version;
    EXPECT_EQ(GetFirewareVersion(nullptr, "x", "SN", version), STATUS_NOT_CONNECTED);
    EXPECT_TRUE(Recorder::Get().Calls().empty());
}

TEST_F(ConnectionExports, AFailedFirmwareQueryWithoutAHandleEndsInANullDisconnect) {
    Recorder::Get().FailAlways("zr3DInitHidDev");
    std::string version;
    Output output;
    EXPECT_EQ(GetFirewareVersion(nullptr, "x", "SN", version), STATUS_PROJECTOR);
    EXPECT_TRUE(MatchesGolden("GetFirewareVersion", "by device type, no board", output.End()));
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
    Output output;
    output.Name(stale, "handle");
    EXPECT_EQ(GetFirewareVersion(stale, nullptr, nullptr, version), STATUS_FAILED);
    EXPECT_TRUE(MatchesGolden("GetFirewareVersion", "by handle, failed", output.End()));
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DExitHidDev(B1)");
}

TEST_F(ConnectionExports, AFirmwareQueryThatRunsOutOfMemoryEndsTheConnectionToo) {
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    void* const stale = std::exchange(m_handle, nullptr);
    Recorder::Get().OnCall("zr3DQueryProjectorFirewareVersion", [] { throw std::bad_alloc(); });
    std::string version;
    Output output;
    output.Name(stale, "handle");
    EXPECT_EQ(GetFirewareVersion(stale, nullptr, nullptr, version), STATUS_FAILED);
    EXPECT_TRUE(MatchesGolden("GetFirewareVersion", "by handle, out of memory", output.End()));
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DExitHidDev(B1)");
}

}  // namespace
}  // namespace Korvex3Sync::tests
