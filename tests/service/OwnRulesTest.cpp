#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>

#include "service/ServiceClient.h"
#include "support/BlockingCall.h"
#include "support/Golden.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using support::MatchesGolden;
using support::Output;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

/// The operations that differ from the common rule.
using OwnRules = ServiceClient;

TEST_F(OwnRules, EnableHeartbeatSucceedsAndDoesNothing) {
    Connect();
    const std::size_t before = Recorder::Get().CallsInOrder().size();
    bool enable = true;
    EXPECT_EQ(m_client->EnableHeartbeat(m_handle, enable), STATUS_SUCCESS);
    EXPECT_TRUE(enable);
    EXPECT_EQ(Recorder::Get().CallsInOrder().size(), before);
}

TEST_F(OwnRules, ConnectGivesTheIdOfTheServiceAsTheHandle) {
    ASSERT_TRUE(Start());
    Output output;
    EXPECT_EQ(m_client->ConnectDevice("sync type", m_handle), STATUS_SUCCESS);
    EXPECT_TRUE(MatchesGolden("ConnectDevice", "through the service", output.End()));
    EXPECT_EQ(m_handle, reinterpret_cast<void*>(77));
    EXPECT_THAT(Recorder::Get().Calls(), Contains("connectDevice(KV00)"));
}

TEST_F(OwnRules, AFailedConnectSetsTheHandleToTheIdToo) {
    ASSERT_TRUE(Start());
    int something = 0;
    m_handle = &something;
    Recorder::Get().FailAlways("connectDevice");
    EXPECT_EQ(m_client->ConnectDevice(nullptr, m_handle), STATUS_FAILED);
    EXPECT_EQ(m_handle, nullptr);
}

TEST_F(OwnRules, ConnectNeedsTheServiceLinkOnly) {
    MakeClient();
    EXPECT_EQ(m_client->ConnectDevice("any", m_handle), STATUS_NOT_CONNECTED);
}

TEST_F(OwnRules, ConnectDoesNotWaitForACallThatRuns) {
    Connect();
    os::Event inside;
    os::Event leave;
    Recorder::Get().OnCall("project", [&] {
        inside.Set();
        leave.Wait();
    });
    support::BlockingCall call([&] { m_client->Project(m_handle, PROJECT_OFF); });
    inside.Wait();
    EXPECT_EQ(m_client->ConnectDevice("any", m_handle), STATUS_SUCCESS);
    leave.Set();
}

TEST_F(OwnRules, OperationsWaitForEachOther) {
    Connect();
    os::Event inside;
    os::Event leave;
    Recorder::Get().OnCall("project", [&] {
        inside.Set();
        leave.Wait();
    });
    support::BlockingCall first([&] { m_client->Project(m_handle, PROJECT_OFF); });
    inside.Wait();
    support::BlockingCall second([&] { m_client->SetVideoTriggerPeriod(m_handle, 5); });
    EXPECT_TRUE(second.WaitUntilBlocked());
    EXPECT_EQ(Recorder::Get().Count("setVideoTriggerPeriod"), 0U);
    leave.Set();
    EXPECT_TRUE(second.WaitUntilReturned());
    EXPECT_EQ(Recorder::Get().Count("setVideoTriggerPeriod"), 1U);
}

TEST_F(OwnRules, DisconnectForgetsTheDeviceWhateverTheStatus) {
    for (const RETSTATUS status : {STATUS_SUCCESS, STATUS_CAMERA}) {
        Connect();
        Recorder::Get().SetValue("disConnectDevice", status);
        void* other = &other;
        Output output;
        EXPECT_EQ(m_client->DisConnectDevice(other), status);
        EXPECT_TRUE(MatchesGolden("DisConnectDevice",
                                  "through the service, status " + std::to_string(status),
                                  output.End()));
        EXPECT_EQ(other, nullptr);
        EXPECT_EQ(m_client->Project(m_handle, PROJECT_OFF), STATUS_NOT_CONNECTED);
        EXPECT_EQ(m_client->DisConnectDevice(m_handle), STATUS_PARAMETER);
        m_client.reset();
    }
}

TEST_F(OwnRules, DisconnectWithoutADeviceIsAParameterError) {
    MakeClient();
    int something = 0;
    m_handle = &something;
    EXPECT_EQ(m_client->DisConnectDevice(m_handle), STATUS_NOT_CONNECTED);
    ASSERT_TRUE(m_client->Init());
    EXPECT_EQ(m_client->DisConnectDevice(m_handle), STATUS_PARAMETER);
    EXPECT_EQ(m_handle, &something);
}

TEST_F(OwnRules, CamerasAreFoundWithoutADevice) {
    ASSERT_TRUE(Start());
    recorder::SetServiceText(QString(300, 'x'));
    Recorder::Get().SetValue("width", 1280);
    Recorder::Get().SetValue("height", 1024);
    std::vector<char*> names{nullptr};
    std::vector<int> widths;
    std::vector<int> heights;
    std::vector<bool> isColor;
    int count = 0;
    Output output;
    EXPECT_EQ(m_client->GetCamerasInformation("KV00", names, widths, heights, isColor, count),
              STATUS_SUCCESS);
    int counted = 0;
    EXPECT_EQ(m_client->GetCameraCount("KV00", counted), STATUS_SUCCESS);
    EXPECT_TRUE(MatchesGolden("GetCamerasInformation", "through the service", output.End()));
    EXPECT_EQ(count, 2);
    EXPECT_EQ(counted, 2);
    EXPECT_THAT(widths, ElementsAre(1280, 1280));
    EXPECT_THAT(heights, ElementsAre(1024, 1024));
    EXPECT_THAT(isColor, ElementsAre(true, true));
    ASSERT_EQ(names.size(), 3U);
    for (int i = 1; i < 3; ++i) {
        // 260 bytes, so a longer name is cut off.
        EXPECT_EQ(std::string(names[i]), std::string(259, 'x'));
        delete[] names[i];
    }
}

TEST_F(OwnRules, ANameOfACameraIsFollowedByZeros) {
    ASSERT_TRUE(Start());
    Recorder::Get().SetValue("count", 1);
    std::vector<char*> names;
    std::vector<int> numbers;
    std::vector<bool> isColor;
    int count = 0;
    ASSERT_EQ(m_client->GetCamerasInformation("KV00", names, numbers, numbers, isColor, count),
              STATUS_SUCCESS);
    ASSERT_EQ(names.size(), 1U);
    EXPECT_EQ(std::string(names[0], 260), "KV00R1" + std::string(254, '\0'));
    delete[] names[0];
}

TEST_F(OwnRules, CamerasThatCannotBeFound) {
    MakeClient();
    std::vector<char*> names;
    std::vector<int> numbers;
    std::vector<bool> isColor;
    int count = -1;
    const auto find = [&](const char* type) {
        return m_client->GetCamerasInformation(type, names, numbers, numbers, isColor, count);
    };
    EXPECT_EQ(find(nullptr), STATUS_PARAMETER);
    EXPECT_EQ(find("KV00"), STATUS_NOT_CONNECTED);
    EXPECT_EQ(m_client->GetCameraCount(nullptr, count), STATUS_PARAMETER);
    EXPECT_EQ(m_client->GetCameraCount("KV00", count), STATUS_NOT_CONNECTED);
    ASSERT_TRUE(m_client->Init());
    Recorder::Get().FailAlways("getCamerasInformation");
    Recorder::Get().FailAlways("getCameraCount");
    Output output;
    EXPECT_EQ(find("KV00"), STATUS_FAILED);
    EXPECT_EQ(m_client->GetCameraCount("KV00", count), STATUS_FAILED);
    EXPECT_TRUE(MatchesGolden("GetCamerasInformation", "the service refuses", output.End()));
    EXPECT_EQ(count, -1);
    EXPECT_THAT(names, IsEmpty());
}

TEST_F(OwnRules, FirmwareNeedsTheServiceLinkOnly) {
    MakeClient();
    std::string version = "before";
    EXPECT_EQ(m_client->GetFirewareVersion(nullptr, "type", "board", version),
              STATUS_NOT_CONNECTED);
    ASSERT_TRUE(m_client->Init());
    recorder::SetServiceText("4.5.6");
    {
        Output output;
        EXPECT_EQ(m_client->GetFirewareVersion(nullptr, "type", "board", version), STATUS_SUCCESS);
        EXPECT_TRUE(MatchesGolden("GetFirewareVersion", "through the service", output.End()));
    }
    EXPECT_EQ(version, "4.5.6");
    EXPECT_TRUE(m_debug.Has("debug GetFirewareVersion: 4.5.6"));
    EXPECT_THAT(Recorder::Get().Calls(), Contains("getFirewareVersion(0, type, board)"));
    Recorder::Get().FailAlways("getFirewareVersion");
    Output output;
    EXPECT_EQ(m_client->GetFirewareVersion(nullptr, nullptr, nullptr, version), STATUS_FAILED);
    EXPECT_TRUE(MatchesGolden("GetFirewareVersion", "the service refuses", output.End()));
    EXPECT_EQ(version, "4.5.6");
}

TEST_F(OwnRules, UserMemoryKeepsEveryByte) {
    Connect();
    QString page(256, QChar(0));
    for (int i = 0; i < page.size(); ++i) {
        page[i] = QChar(i);
    }
    recorder::SetServiceText(page);
    char* text = nullptr;
    ASSERT_EQ(m_client->ReadUserInfomation(m_handle, 3, text), STATUS_SUCCESS);
    for (int i = 0; i < page.size(); ++i) {
        EXPECT_EQ(static_cast<unsigned char>(text[i]), i);
    }
    EXPECT_EQ(text[256], '\0');
    delete[] text;
    EXPECT_EQ(m_client->WriteUserInfomation(m_handle, 3, nullptr, 5), STATUS_SUCCESS);
    EXPECT_THAT(Recorder::Get().Calls(), Contains("writeUserInfomation(77, 3, )"));
}

TEST_F(OwnRules, DistanceIndicateIsRefusedDuringAReconnectWithoutATrace) {
    Connect();
    RETSTATUS during = STATUS_SUCCESS;
    std::vector<std::string> logged{"none"};
    Recorder::Get().OnCall("getCamerasInformation", [&] {
        Output output;
        during = m_client->SetDistanceIndicate(m_handle, DISTANCE_STATUS_2);
        logged = output.End();
    });
    const std::vector<std::string> calls = ReconnectCalls();
    EXPECT_EQ(during, STATUS_FAILED);
    EXPECT_THAT(logged, IsEmpty());
    EXPECT_THAT(calls, Contains("setDistanceIndicate(77, 0)"));
    EXPECT_THAT(calls, Not(Contains("setDistanceIndicate(77, 2)")));
    EXPECT_EQ(m_client->SetDistanceIndicate(m_handle, DISTANCE_STATUS_2), STATUS_SUCCESS);
}

TEST_F(OwnRules, OtherOperationsWaitForAReconnectAndUseItsId) {
    Connect();
    Recorder::Get().SetValue("id", 78);
    os::Event connecting;
    os::Event connect;
    Recorder::Get().OnCall("connectDevice", [&] {
        connecting.Set();
        connect.Wait();
    });
    QMetaObject::invokeMethod(m_client.get(), "ReConnect", Qt::QueuedConnection);
    connecting.Wait();
    support::BlockingCall call([&] { m_client->Project(m_handle, PROJECT_PATTERN_1); });
    EXPECT_TRUE(call.WaitUntilBlocked());
    connect.Set();
    EXPECT_TRUE(call.WaitUntilReturned());
    EXPECT_EQ(Recorder::Get().Count("project(78, 1)"), 2U);  // from the cache, and the call
    Settle();
}

}  // namespace
}  // namespace Korvex3Sync::tests
