#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <thread>

#include "platform/os/TimeScale.h"
#include "support/Golden.h"
#include "sync/PartsAlone.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using support::MatchesGolden;
using support::Output;
using Calls = std::vector<std::string>;

/// One camera, two channel codes.
class CameraParameters : public testing::Test {
protected:
    CameraParameters() { Recorder::Get().Reset(); }
    void SetUp() override {
        ASSERT_EQ(m_head.board.InitProjector("BOARD"), STATUS_SUCCESS);
        ASSERT_EQ(m_head.Open(), 0);
        m_connected = Recorder::Get().Calls().size();
    }
    /// The calls since the connect.
    Calls Since() const {
        const Calls calls = Recorder::Get().Calls();
        return {calls.begin() + static_cast<std::ptrdiff_t>(m_connected), calls.end()};
    }
    os::ScopedTimeScale m_scale{0.05};
    CamerasAlone m_head;
    CameraSet& m_cameras = m_head.cameras;
    std::size_t m_connected = 0;
};

TEST_F(CameraParameters, ExposureAndGainGoOutInOneWordAndAreRememberedAsGiven) {
    Output output;
    EXPECT_EQ(m_cameras.SetCameraExposureAndGain(1, 8.5, 3), STATUS_SUCCESS);
    EXPECT_TRUE(MatchesGolden("SetCameraExposureAndGain", "set", output.End()));
    EXPECT_EQ(m_cameras.SetCameraExposureAndGain(0, 30.0, 1), STATUS_SUCCESS);
    EXPECT_EQ(Since(), (Calls{"SetCameraIntParam(C1, 5, 3413)",     // 0x0D55
                              "SetCameraIntParam(C1, 5, 1068)"}));  // 0x042C
    const RememberedParameters settings = m_cameras.ParametersToRestore();
    EXPECT_EQ(settings.exposures, (std::map<int, double>{{0, 30.0}, {1, 8.5}}));
    EXPECT_EQ(settings.gains, (std::map<int, int>{{0, 1}, {1, 3}}));
}

TEST_F(CameraParameters, NoNumberAndNoOrderIsRefusedByTheCombinedSetter) {
    EXPECT_EQ(m_cameras.SetCameraExposureAndGain(-7, std::numeric_limits<double>::quiet_NaN(), -1),
              STATUS_SUCCESS);
    EXPECT_EQ(Since(), Calls{"SetCameraIntParam(C1, 5, 64768)"});  // 0xFD00: order 1, exposure 0
}

TEST_F(CameraParameters, ACombinedSetterThatFailsIsTriedOnceMoreAndSucceedsAnyway) {
    Recorder::Get().FailAlways("SetCameraIntParam");
    Output output;
    EXPECT_EQ(m_cameras.SetCameraExposureAndGain(0, 1.0, 1), STATUS_SUCCESS);
    EXPECT_TRUE(MatchesGolden("SetCameraExposureAndGain", "failed twice", output.End()));
    EXPECT_EQ(Since(), (Calls{"SetCameraIntParam(C1, 5, 1034)", "SetCameraIntParam(C1, 5, 1034)"}));
    EXPECT_EQ(m_cameras.ParametersToRestore().gains.at(0), 1) << "remembered though it failed";
}

TEST_F(CameraParameters, TheCombinedQuerySelectsBeforeEachReading) {
    Recorder::Get().SetValue("exposure", 4321);
    Recorder::Get().SetValue("gain", 6);
    double exposure = 0.0;
    int gain = 0;
    EXPECT_EQ(m_cameras.GetCameraExposureAndGain(6, exposure, gain), STATUS_SUCCESS);
    EXPECT_EQ(Since(), (Calls{"SetCameraIntParam(C1, 5, 512)", "GetExposureTime(C1)",
                              "SetCameraIntParam(C1, 5, 512)", "GetGain(C1)"}))
        << "order 6 & 3";
    EXPECT_EQ(exposure, 4.321);
    EXPECT_EQ(gain, 6);
}

TEST_F(CameraParameters, TheCombinedQueryDoesNotReportACameraThatRefuses) {
    for (const char* call : {"SetCameraIntParam", "GetGain"}) {
        Recorder::Get().FailAlways(call);
    }
    double exposure = 5.0;
    int gain = 77;
    EXPECT_EQ(m_cameras.GetCameraExposureAndGain(0, exposure, gain), STATUS_SUCCESS);
    EXPECT_EQ(exposure, 0.0);
    EXPECT_EQ(gain, 77);
}

TEST_F(CameraParameters, NoCallSlipsBetweenSelectionAndReading) {
    std::thread other;
    Recorder::Get().OnCall("SetCameraIntParam", [&] {
        if (!other.joinable()) {
            other = std::thread([&] { m_head.board.Project(PROJECT_PATTERN_1); });
        }
    });
    double exposure = 0.0;
    int gain = 0;
    m_cameras.GetCameraExposureAndGain(1, exposure, gain);
    other.join();
    // The first call of the grab thread may come at any time.
    const Calls calls = Recorder::Get().CallsInOrder();
    const auto projected = std::ranges::find(calls, "zr3DProject(B1, 1)");
    ASSERT_NE(projected, calls.end());
    EXPECT_EQ(std::find(projected, calls.end(), "GetGain(C1)"), calls.end());
}

TEST_F(CameraParameters, AnExposureAloneIsSelectedThenSentInMicroseconds) {
    Output output;
    EXPECT_EQ(m_cameras.SetExposureTime(2, 12.3456), STATUS_SUCCESS);
    EXPECT_TRUE(MatchesGolden("SetExposureTime", "set", output.End()));
    EXPECT_EQ(Since(), (Calls{"SetCameraIntParam(C1, 5, 2)", "SetExposureTime(C1, 12345)"}));
    EXPECT_EQ(m_cameras.ParametersToRestore().exposures, (std::map<int, double>{{2, 12345.0}}));
    EXPECT_TRUE(m_cameras.ParametersToRestore().gains.empty());
}

TEST_F(CameraParameters, AnExposureAloneIsTriedTwiceAndItsSelectionOnce) {
    for (const char* call : {"SetCameraIntParam", "SetExposureTime"}) {
        Recorder::Get().FailAlways(call);
    }
    Output output;
    EXPECT_EQ(m_cameras.SetExposureTime(-3, 1e300), STATUS_SUCCESS);
    EXPECT_TRUE(MatchesGolden("SetExposureTime", "failed twice", output.End()));
    EXPECT_EQ(Since(), (Calls{"SetCameraIntParam(C1, 5, -3)", "SetExposureTime(C1, 2147483647)",
                              "SetExposureTime(C1, 2147483647)"}));
}

TEST_F(CameraParameters, AnExposureIsReadInMillisecondsUpToTheOrderBehindTheLast) {
    Recorder::Get().SetValue("exposure", 1500);
    double exposure = 9.0;
    EXPECT_EQ(m_cameras.GetExposureTime(-1, exposure), STATUS_NOT_CONNECTED);
    EXPECT_EQ(m_cameras.GetExposureTime(3, exposure), STATUS_NOT_CONNECTED);
    EXPECT_EQ(exposure, 9.0);
    EXPECT_TRUE(Since().empty());
    EXPECT_EQ(m_cameras.GetExposureTime(2, exposure), STATUS_SUCCESS);
    EXPECT_EQ(exposure, 1.5);
    EXPECT_EQ(Since(), (Calls{"SetCameraIntParam(C1, 5, 2)", "GetExposureTime(C1)"}));
}

TEST_F(CameraParameters, AGainIsSetUpToTheOrderBehindTheLast) {
    EXPECT_EQ(m_cameras.SetCameraGain(-1, 5), STATUS_NOT_CONNECTED);
    EXPECT_EQ(m_cameras.SetCameraGain(3, 5), STATUS_NOT_CONNECTED);
    EXPECT_TRUE(Since().empty());
    EXPECT_TRUE(m_cameras.ParametersToRestore().gains.empty());
    Output output;
    EXPECT_EQ(m_cameras.SetCameraGain(2, 5), STATUS_SUCCESS);
    EXPECT_TRUE(MatchesGolden("SetCameraGain", "set", output.End()));
    EXPECT_EQ(Since(), (Calls{"SetCameraIntParam(C1, 5, 2)", "SetGain(C1, 5)"}));
    EXPECT_EQ(m_cameras.ParametersToRestore().gains, (std::map<int, int>{{2, 5}}));
    EXPECT_TRUE(m_cameras.ParametersToRestore().exposures.empty());
}

TEST_F(CameraParameters, AGainThatFailsIsTriedOnceMore) {
    Recorder::Get().FailAlways("SetGain");
    Output output;
    EXPECT_EQ(m_cameras.SetCameraGain(0, 5), STATUS_SUCCESS);
    EXPECT_TRUE(MatchesGolden("SetCameraGain", "failed twice", output.End()));
    EXPECT_EQ(Recorder::Get().Count("SetGain"), 2u);
}

TEST_F(CameraParameters, AGainIsReadForTheOrdersOfTheHeadOnly) {
    Recorder::Get().SetValue("gain", 4);
    int gain = 9;
    EXPECT_EQ(m_cameras.GetCameraGain(-1, gain), STATUS_NOT_CONNECTED);
    EXPECT_EQ(m_cameras.GetCameraGain(2, gain), STATUS_NOT_CONNECTED);
    EXPECT_EQ(gain, 9);
    EXPECT_EQ(m_cameras.GetCameraGain(1, gain), STATUS_SUCCESS);
    EXPECT_EQ(gain, 4);
    EXPECT_EQ(Since(), (Calls{"SetCameraIntParam(C1, 5, 1)", "GetGain(C1)"}));
}

TEST_F(CameraParameters, ASerialIsANewTextOfTheCaller) {
    char* serial = nullptr;
    EXPECT_EQ(m_cameras.GetCameraSerialNumber(-1, serial), STATUS_NOT_CONNECTED);
    EXPECT_EQ(m_cameras.GetCameraSerialNumber(2, serial), STATUS_NOT_CONNECTED);
    EXPECT_EQ(serial, nullptr);
    EXPECT_EQ(m_cameras.GetCameraSerialNumber(1, serial), STATUS_SUCCESS);
    EXPECT_STREQ(serial, "KV00R1");
    char* const first = serial;
    EXPECT_EQ(m_cameras.GetCameraSerialNumber(1, serial), STATUS_NOT_CONNECTED);
    EXPECT_EQ(serial, first) << "what is there already is not touched";
    delete[] serial;
    serial = nullptr;
    Recorder::Get().FailAlways("GetSerialNo");
    EXPECT_EQ(m_cameras.GetCameraSerialNumber(0, serial), STATUS_SUCCESS);
    EXPECT_STREQ(serial, "");
    delete[] serial;
}

TEST_F(CameraParameters, TheResolutionIsThatOfTheFirstCamera) {
    int width = 1;
    int height = 2;
    EXPECT_EQ(m_cameras.GetCameraResolution(-1, width, height), STATUS_NOT_CONNECTED);
    EXPECT_EQ(m_cameras.GetCameraResolution(2, width, height), STATUS_NOT_CONNECTED);
    Recorder::Get().FailNth("GetResolution", 1);
    EXPECT_EQ(m_cameras.GetCameraResolution(0, width, height), STATUS_SUCCESS);
    EXPECT_EQ(width, 1);
    EXPECT_EQ(height, 2);
    EXPECT_EQ(m_cameras.GetCameraResolution(1, width, height), STATUS_SUCCESS);
    EXPECT_EQ(width, 8);
    EXPECT_EQ(height, 4);
}

TEST_F(CameraParameters, ASharedCameraCountsOnce) {
    int count = 0;
    EXPECT_EQ(m_cameras.GetConnectCameraCount(count), STATUS_SUCCESS);
    EXPECT_EQ(count, 1);
    EXPECT_TRUE(Since().empty());
}

TEST(CameraParametersWithoutCameras, SettersFailAndQueriesSayThatThereIsNothing) {
    Recorder::Get().Reset();
    CamerasAlone head;
    CameraSet& cameras = head.cameras;
    double exposure = 5.0;
    int gain = 5;
    int count = 5;
    EXPECT_EQ(cameras.SetCameraExposureAndGain(0, 1.0, 1), STATUS_FAILED);
    EXPECT_EQ(cameras.SetExposureTime(0, 1.0), STATUS_FAILED);
    EXPECT_EQ(cameras.SetCameraGain(0, 1), STATUS_FAILED);
    EXPECT_EQ(cameras.GetCameraExposureAndGain(0, exposure, gain), STATUS_SUCCESS);
    EXPECT_EQ(exposure, 5.0);
    EXPECT_EQ(gain, 5);
    EXPECT_EQ(cameras.GetExposureTime(0, exposure), STATUS_FAILED);
    EXPECT_EQ(exposure, -1.0);
    EXPECT_EQ(cameras.GetCameraGain(0, gain), STATUS_NOT_CONNECTED) << "no channel code at all";
    EXPECT_EQ(cameras.GetConnectCameraCount(count), STATUS_SUCCESS);
    EXPECT_EQ(count, 0);
    EXPECT_TRUE(Recorder::Get().Calls().empty());
}

TEST(CameraParametersWithoutCameras, AFailedConnectLeavesChannelCodesAndNoCamera) {
    Recorder::Get().Reset();
    Recorder::Get().FailAlways("OpenCamera");
    CamerasAlone head;
    CameraSet& cameras = head.cameras;
    ASSERT_EQ(head.Open(), 2);
    int gain = 5;
    int width = 5;
    int height = 5;
    char* serial = nullptr;
    EXPECT_EQ(cameras.GetCameraGain(0, gain), STATUS_FAILED);
    EXPECT_EQ(gain, -1);
    EXPECT_EQ(cameras.GetCameraResolution(0, width, height), STATUS_FAILED);
    EXPECT_EQ(width, -1);
    EXPECT_EQ(height, -1);
    EXPECT_EQ(cameras.GetCameraSerialNumber(0, serial), STATUS_FAILED);
    EXPECT_EQ(serial, nullptr);
}

}  // namespace
}  // namespace Korvex3Sync::tests
