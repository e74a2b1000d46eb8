#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>

#include "interface/EveryExport.h"
#include "interface/Mode.h"
#include "service/ServiceClient.h"
#include "support/Golden.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using support::MatchesGolden;
using support::Output;
using ::testing::IsEmpty;
using Calls = std::vector<std::string>;

/// The exported functions in service mode, from the switch on.
class ServiceExports : public ServiceClient {
protected:
    ~ServiceExports() override {
        SwitchOnDeviceService(false);
        delete Korvex3Sync::ServiceClient();
        SetServiceClient(nullptr);
    }
    void ConnectThroughExports() {
        ASSERT_EQ(SwitchOnDeviceService(true), STATUS_SUCCESS);
        std::string serial = "KV00R1";
        ASSERT_EQ(ConnectDevice("any", "BOARD", {serial.data()}, {8}, {4}, m_handle),
                  STATUS_SUCCESS);
        ASSERT_EQ(m_handle, reinterpret_cast<void*>(77));
    }
    /// The calls that `call` makes on this thread.
    static Calls CallsOf(const std::function<void()>& call) {
        const std::size_t before = Recorder::Get().Calls().size();
        call();
        const Calls calls = Recorder::Get().Calls();
        return {calls.begin() + static_cast<std::ptrdiff_t>(before), calls.end()};
    }
};

TEST_F(ServiceExports, TheSwitchStartsTheClientOnce) {
    EXPECT_EQ(SwitchOnDeviceService(true), STATUS_SUCCESS);
    EXPECT_EQ(SwitchOnDeviceService(true), STATUS_NOT_SUPPORTED);
    EXPECT_TRUE(ServiceMode());
    EXPECT_EQ(SwitchOnDeviceService(false), STATUS_SUCCESS);
    EXPECT_FALSE(ServiceMode());
    EXPECT_NE(Korvex3Sync::ServiceClient(), nullptr);
    EXPECT_EQ(SwitchOnDeviceService(true), STATUS_NOT_SUPPORTED);
    EXPECT_EQ(Recorder::Get().Count("SyncInterface"), 1U);
}

TEST_F(ServiceExports, AFailedStartIsLoggedAndKeepsTheClient) {
    Recorder::Get().SetValue("count", 0);
    Output output;
    EXPECT_EQ(SwitchOnDeviceService(true), STATUS_SUCCESS);
    EXPECT_TRUE(MatchesGolden("SwitchOnDeviceService", "no cameras", output.End()));
    EXPECT_EQ(SwitchOnDeviceService(true), STATUS_NOT_SUPPORTED);
}

TEST_F(ServiceExports, EachStandardFunctionCallsItsOperationOfTheService) {
    ConnectThroughExports();
    for (const Export& one : EveryExport()) {
        SCOPED_TRACE(one.name);
        RETSTATUS status = STATUS_FAILED;
        const Calls calls = CallsOf([&] { status = one.call(m_handle); });
        switch (one.kind) {
            case Kind::Standard: {
                EXPECT_EQ(status, STATUS_SUCCESS);
                const std::string answeredHere = one.name;
                if (answeredHere == "EnableHeartbeat" || answeredHere == "GetScanStatistics") {
                    EXPECT_THAT(calls, IsEmpty());
                    break;
                }
                std::string name = one.name;
                name[0] = static_cast<char>(std::tolower(name[0]));
                ASSERT_EQ(calls.size(), 1U);
                EXPECT_EQ(calls[0].substr(0, name.size() + 3), name + "(77");
                break;
            }
            case Kind::DirectOnly:
                EXPECT_EQ(status, STATUS_SYNCHRONISM_TYPE);
                EXPECT_THAT(calls, IsEmpty());
                break;
            case Kind::AlwaysDirect:  // the id is no connection of direct mode
                EXPECT_EQ(status, STATUS_NOT_CONNECTED);
                EXPECT_THAT(calls, IsEmpty());
                break;
            case Kind::Retired:
                EXPECT_EQ(status, STATUS_NOT_SUPPORTED);
                EXPECT_THAT(calls, IsEmpty());
        }
    }
}

TEST_F(ServiceExports, TheFunctionsWithBodiesOfTheirOwn) {
    ConnectThroughExports();
    EXPECT_EQ(
        CallsOf([&] {
            std::string version;
            EXPECT_EQ(GetFirewareVersion(m_handle, "type", "board", version), STATUS_SUCCESS);
            EXPECT_EQ(GetFirewareVersion(nullptr, "type", "board", version), STATUS_SUCCESS);
            EXPECT_EQ(version, "KV00R1");
        }),
        (Calls{"getFirewareVersion(77, type, board)", "getFirewareVersion(77, type, board)"}));
    EXPECT_EQ(CallsOf([&] {
                  std::vector<char*> names;
                  std::vector<int> numbers;
                  std::vector<bool> isColor;
                  int count = 0;
                  EXPECT_EQ(GetCamerasInformation("KV00", names, numbers, numbers, isColor, count),
                            STATUS_SUCCESS);
                  EXPECT_EQ(count, 2);
                  for (const char* const name : names) {
                      delete[] name;
                  }
                  EXPECT_EQ(GetCameraCount("KV01", count), STATUS_SUCCESS);
              }),
              (Calls{"getCamerasInformation(KV00)", "getCameraCount(KV01)"}));
    EXPECT_EQ(CallsOf([&] {
                  EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
                  EXPECT_EQ(m_handle, nullptr);
              }),
              Calls{"disConnectDevice(77)"});
}

TEST_F(ServiceExports, AConnectionOfDirectModeIsUsableAfterTheWayBack) {
    std::string serial = "KV00R1";
    void* direct = nullptr;
    ASSERT_EQ(ConnectDevice("any", "BOARD", {serial.data(), serial.data()}, {8, 8}, {4, 4}, direct),
              STATUS_SUCCESS);
    ConnectThroughExports();
    SwitchOnDeviceService(false);
    EXPECT_EQ(Project(direct, PROJECT_PATTERN_1), STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DProject(B1, 1)");
    EXPECT_EQ(DisConnectDevice(direct), STATUS_SUCCESS);
}

}  // namespace
}  // namespace Korvex3Sync::tests
