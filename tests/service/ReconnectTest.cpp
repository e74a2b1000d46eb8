#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

#include "platform/os/Clock.h"
#include "service/ServiceClient.h"
#include "support/Golden.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using std::chrono::milliseconds;
using support::MatchesGolden;
using support::Output;
using support::WaitUntil;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;

void OnStatus(const void* const&, const unsigned char&, const unsigned char&) {}
void OnSet(const void* const&, std::vector<unsigned char*>&, const int&, const int&,
           std::vector<int>&) {}

class Reconnect : public ServiceClient {
protected:
    std::size_t Lines(const std::string& line) const {
        const std::vector<std::string> lines = m_debug.Lines();
        return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
    }
    /// Set by a test during a reconnect, so that an interval does not end before the test looks.
    std::optional<os::ScopedTimeScale> m_slow;
    static std::string LastOf(const std::vector<std::string>& calls) {
        return calls.empty() ? "" : calls.back();
    }
};

TEST_F(Reconnect, WritesTheSettingsInTheirOrderAndLogsThem) {
    Connect();
    int context = 0;
    m_client->SetStatusCallBackFunction(m_handle, OnStatus, &context);
    m_client->SetScanCallBackFunction(m_handle, OnSet, &context);
    m_client->SetCameraExposureAndGain(m_handle, 3, 1.5, 4);
    m_client->SetCameraExposureAndGain(m_handle, 0, 2.5, 5);
    m_client->SetCameraExposureAndGain(m_handle, 3, 3.5, 6);
    m_client->EnableVideoTrigger(m_handle, TRIGGER_PATTERN_COLOR, true);
    Settle();
    const std::size_t before = m_debug.Lines().size();
    Output output(Output::Of::kOtherThreads);
    EXPECT_THAT(
        ReconnectCalls(),
        ElementsAre("getCamerasInformation(KV00)", "connectDevice(KV00)",
                    "setCameraExposureAndGain(77, 0, 2.5, 5)",
                    "setCameraExposureAndGain(77, 3, 3.5, 6)",
                    "setStrobeControlledByTrigger(77, 2, 1)", "enableBlueLaser(77, 0, 0)",
                    "enableIRLaser(77, 0)", "setVideoTriggerPeriod(77, 10)",
                    "setProjectorBrightness(77, 10)", "project(77, 0)",
                    "setStrobeDutioRatio(77, 100, 100, 100)", "setLaserLineDutioRatio(77, 100)",
                    "setProjectDutioRatio(77, 0)", "setIRLaserDutioRatio(77, 100)",
                    "setDistanceIndicate(77, 0)", "setStatusCallBackFunction(77, 1)",
                    "setScanCallBackFunction(77, 1)", "enableVideoTrigger(77, 3, 1)"));
    // The end of the old service is reported whenever it is seen.
    std::vector<std::string> records = output.End();
    std::erase_if(records, [](const std::string& record) {
        return record.find("DeviceServiceProcess state changed: 0") != std::string::npos;
    });
    EXPECT_TRUE(MatchesGolden("ServiceReconnect", "records", records));
    std::vector<std::string> lines = m_debug.Lines();
    lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before));
    std::erase_if(lines, [](const std::string& line) { return !line.starts_with("debug "); });
    EXPECT_TRUE(MatchesGolden("ServiceReconnect", "debug channel", lines));
}

TEST_F(Reconnect, PausesBetweenTheSettings) {
    Connect();
    std::chrono::steady_clock::time_point begin;
    std::unique_ptr<os::ScopedTimeScale> realTime;
    Recorder::Get().OnCall("connectDevice", [&] {
        realTime = std::make_unique<os::ScopedTimeScale>(1);
        begin = std::chrono::steady_clock::now();
    });
    std::chrono::steady_clock::duration taken{};
    Recorder::Get().OnCall("enableVideoTrigger", [&] {
        taken = std::chrono::steady_clock::now() - begin;
        realTime.reset();
    });
    ReconnectCalls();
    EXPECT_GE(taken, 10 * milliseconds(20));
}

TEST_F(Reconnect, WatchesTheImagesAgainIfTheTriggerIsOn) {
    Connect();
    ReconnectCalls();
    Settle();
    EXPECT_FALSE(Timer(kScanTimer).active);
    m_client->EnableVideoTrigger(m_handle, TRIGGER_PATTERN, true);
    Recorder::Get().OnCall("enableVideoTrigger", [this] { m_slow.emplace(1.0); });
    ReconnectCalls();
    Settle();
    EXPECT_TRUE(Timer(kScanTimer).active);
}

TEST_F(Reconnect, StartsOnlyTheCallbacksThatAreSet) {
    Connect();
    int context = 0;
    m_client->SetStatusCallBackFunction(m_handle, OnStatus, &context);
    m_client->SetScanCallBackFunction(m_handle, OnSet, &context);
    m_client->SetStatusCallBackFunction(m_handle, OnStatus, nullptr);
    std::vector<std::string> calls = ReconnectCalls();
    EXPECT_THAT(calls, Not(Contains("setStatusCallBackFunction(77, 1)")));
    EXPECT_THAT(calls, Contains("setScanCallBackFunction(77, 1)"));
    m_client->SetStatusCallBackFunction(m_handle, OnStatus, &context);
    m_client->SetScanCallBackFunction(m_handle, nullptr, &context);
    calls = ReconnectCalls();
    EXPECT_THAT(calls, Contains("setStatusCallBackFunction(77, 1)"));
    EXPECT_THAT(calls, Not(Contains("setScanCallBackFunction(77, 1)")));
}

TEST_F(Reconnect, EndsAtARefusedConnectionStrobeOrDistanceOnly) {
    Configure({{"ReconnectPeriod", "1000"}});
    Connect();
    struct Refused {
        const char* call;
        const char* last;
        bool aborts;
    };
    const std::vector<Refused> all{
        {"connectDevice", "connectDevice(KV00)", true},
        {"setStrobeControlledByTrigger", "setStrobeControlledByTrigger(77, 2, 1)", true},
        {"setDistanceIndicate", "setDistanceIndicate(77, 0)", true},
        {"setCameraExposureAndGain", "enableVideoTrigger(77, 1, 0)", false},
        {"enableBlueLaser", "enableVideoTrigger(77, 1, 0)", false},
        {"enableIRLaser", "enableVideoTrigger(77, 1, 0)", false},
        {"setVideoTriggerPeriod", "enableVideoTrigger(77, 1, 0)", false},
        {"setProjectorBrightness", "enableVideoTrigger(77, 1, 0)", false},
        {"project", "enableVideoTrigger(77, 1, 0)", false},
        {"setStrobeDutioRatio", "enableVideoTrigger(77, 1, 0)", false},
        {"setLaserLineDutioRatio", "enableVideoTrigger(77, 1, 0)", false},
        {"setProjectDutioRatio", "enableVideoTrigger(77, 1, 0)", false},
        {"setIRLaserDutioRatio", "enableVideoTrigger(77, 1, 0)", false},
        {"enableVideoTrigger", "enableVideoTrigger(77, 1, 0)", false},
    };
    m_client->SetCameraExposureAndGain(m_handle, 0, 2.5, 5);
    for (const Refused& refused : all) {
        SCOPED_TRACE(refused.call);
        Recorder::Get().SetValue(refused.call, STATUS_CAMERA);
        const std::size_t failures = Lines("debug ReConnect ConnectInner ret=0");
        EXPECT_EQ(LastOf(ReconnectCalls()), refused.last);
        EXPECT_EQ(Lines("debug ReConnect ConnectInner ret=0"), failures + (refused.aborts ? 1 : 0));
        EXPECT_EQ(Timer(kRetryTimer).active, refused.aborts);
        Recorder::Get().SetValue(refused.call, 0);
    }
}

TEST_F(Reconnect, IsRetriedUntilItSucceeds) {
    Configure({{"ReconnectPeriod", "1"}});
    Connect();
    Recorder::Get().FailNth("connectDevice", 1);
    Recorder::Get().FailNth("connectDevice", 2);
    QMetaObject::invokeMethod(m_client.get(), "ReConnect", Qt::QueuedConnection);
    ASSERT_TRUE(Recorder::Get().WaitForCount("enableVideoTrigger", 1));
    Settle();
    EXPECT_EQ(Recorder::Get().Count("connectDevice"), 4U);
    EXPECT_FALSE(Timer(kRetryTimer).active);
    EXPECT_EQ(Lines("debug ReconnectCount = 2 MaxReconnectCount =  5"), 1U);
}

TEST_F(Reconnect, WaitsForItsPeriodBeforeItTriesAgain) {
    Connect();
    Recorder::Get().FailAlways("connectDevice");
    Recorder::Get().OnCall("connectDevice", [this] { m_slow.emplace(1.0); });
    ReconnectCalls();
    const TimerState retry = Timer(kRetryTimer);
    EXPECT_TRUE(retry.active);
    EXPECT_EQ(retry.interval, 10000);
}

TEST_F(Reconnect, WithoutCamerasIsRetriedToo) {
    Connect();
    Recorder::Get().SetValue("count", 0);
    Recorder::Get().OnCall("getCamerasInformation", [this] { m_slow.emplace(1.0); });
    EXPECT_EQ(ReconnectCalls(), std::vector<std::string>{"getCamerasInformation(KV00)"});
    EXPECT_TRUE(m_debug.Has("debug ReConnect init ret=0"));
    EXPECT_TRUE(Timer(kRetryTimer).active);
}

TEST_F(Reconnect, RestartsTheDeviceAtTheSixthAttempt) {
    Configure({{"ReconnectPeriod", "1000"}});
    Connect();
    Recorder::Get().FailAlways("connectDevice");
    for (int i = 0; i < 11; ++i) {
        ReconnectCalls();
        EXPECT_EQ(Lines("debug Start ReStartDevice"), i < 5 ? 0U : i < 10 ? 1U : 2U) << i;
    }
}

TEST_F(Reconnect, NeverRestartsTheDeviceWithoutALimit) {
    Configure({{"MaxReconnectCount", "-1"}, {"ReconnectPeriod", "1000"}});
    Connect();
    Recorder::Get().FailAlways("connectDevice");
    for (int i = 0; i < 7; ++i) {
        ReconnectCalls();
    }
    EXPECT_EQ(Lines("debug Start ReStartDevice"), 0U);
    EXPECT_EQ(Lines("debug ReconnectCount = 6 MaxReconnectCount =  -1"), 1U);
}

TEST_F(Reconnect, ThatSucceedsCountsFromZeroAgain) {
    Configure({{"MaxReconnectCount", "2"}, {"ReconnectPeriod", "1000"}});
    Connect();
    for (int i = 0; i < 4; ++i) {
        Recorder::Get().FailNth("connectDevice", 1);
        ReconnectCalls();
        ReconnectCalls();
    }
    EXPECT_EQ(Lines("debug Start ReStartDevice"), 0U);
}

}  // namespace
}  // namespace Korvex3Sync::tests
