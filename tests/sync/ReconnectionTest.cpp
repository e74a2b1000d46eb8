#include <gmock/gmock.h>

#include <chrono>
#include <thread>

#include "platform/os/Clock.h"
#include "sync/ReconnectedManager.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using testing::Contains;
using testing::Not;
using Calls = std::vector<std::string>;

constexpr char kOpen[] = "zr3DInitHidDev(null, 3267, 5752, BOARD)";

/// What a fresh connection writes back to a board of this name.
Calls FreshSettings(const std::string& b) {
    return {"zr3DOpenOrCloseStrobeFlicker(" + b + ", 2, 1)",
            "zr3DSetDistanceIndicateState(" + b + ", 0)",
            "zr3DProject(" + b + ", 0)",
            "zr3DSetProjectorBrightness(" + b + ", 10)",
            "zr3DSetWorkTime(" + b + ", 84, 1000)",
            "zr3DSetIRLaserLevel(" + b + ", 1)",
            "zr3DSetLaserEnable(" + b + ", 0, 0)",
            "zr3DSetDutioRatio(" + b + ", 49, 100)",
            "zr3DSetWorkTime(" + b + ", 82, 1000)",
            "zr3DSetIRLaserEnable(" + b + ", 0)",
            "zr3DSetWorkTime(" + b + ", 86, 1000)",
            "zr3DSetDutioRatio(" + b + ", 53, 100)",
            "zr3DSetVideoTrigleMode(" + b + ", 5)",
            "zr3DSetVideoTriggerPeriod(" + b + ", 10)",
            "zr3DSetDutioRatio(" + b + ", 51, 100)",
            "zr3DSetLedDutioRatio(" + b + ", 41, 100, 100, 100)",
            "zr3DSetLedWorkTime(" + b + ", 1, 1000)",
            "zr3DSetLedWorkTime(" + b + ", 0, 1000)"};
}

Calls operator+(Calls first, const Calls& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

class Reconnection : public ReconnectedManager {};

TEST_F(Reconnection, ReopensBoardAndCamerasAndWritesEverythingBackInOrder) {
    Connect();
    EXPECT_EQ(Reconnect(), 0);
    EXPECT_EQ(Since(),
              (Calls{"ReleaseCamera(C1)", "CreateCamera(KV00R1)", "zr3DExitHidDev(B1)", kOpen,
                     "zr3DQueryCurrentStatus(B2)", "CloseCamera(C2)",
                     "OpenCamera(C2, KV00R1, 8, 4)", "GetDeviceType(C2)", "StartCamera(C2, 0)"} +
               FreshSettings("B2") + Calls{"zr3DEnableHeartbeat(B2, 1)"}));
    EXPECT_TRUE(Says("reconnected"));
    EXPECT_TRUE(FramesFlow());
}

TEST_F(Reconnection, TheHeartbeatIsOnAfterwardsThoughItWasSwitchedOff) {
    Connect();
    m_manager->Board().EnableHeartbeat(false);
    EXPECT_EQ(Reconnect(), 0);
    EXPECT_EQ(Since().back(), "zr3DEnableHeartbeat(B2, 1)");
    EXPECT_FALSE(m_manager->Board().SettingsToRestore().heartbeatEnabled)
        << "what was asked for stays";
}

TEST_F(Reconnection, SettingsThatWereAskedForComeBackTheLaserLineWorkTimeAtTheInfraredLaser) {
    Connect();
    m_manager->Board().SetLaserLineWorkTime(500);
    m_manager->Board().EnableVideoTrigger(TRIGGER_LASER_LINES_COLOR, true);
    Recorder::Get().FailAlways("zr3DProject");
    m_manager->Board().Project(PROJECT_PATTERN_2);
    Recorder::Get().FailAlways("zr3DProject", false);
    EXPECT_EQ(Reconnect(), 0);
    const Calls calls = Since();
    EXPECT_THAT(calls, Contains("zr3DSetWorkTime(B2, 82, 1000)"));
    EXPECT_THAT(calls, Contains("zr3DSetWorkTime(B2, 86, 500)"));
    EXPECT_THAT(calls, Contains("zr3DSetVideoTrigleMode(B2, 6)"));
    EXPECT_THAT(calls, Contains("zr3DProject(B2, 2)")) << "it had failed";
}

TEST_F(Reconnection, ExposureAndGainComeBackForEachCameraThatReopens) {
    ConnectTwoCameras();
    m_manager->Cameras().SetCameraExposureAndGain(2, 5.0, 1);
    m_manager->Cameras().SetCameraExposureAndGain(0, 6.0, 2);
    m_manager->Cameras().SetExposureTime(1, 7.0);  // no gain: not written back
    EXPECT_EQ(Reconnect(), 0);
    Calls parameters;
    for (const std::string& call : Since()) {
        if (call.starts_with("SetCameraIntParam(C3")) {
            parameters.push_back(call);
        }
    }
    const Calls once{"SetCameraIntParam(C3, 5, 2108)", "SetCameraIntParam(C3, 5, 1586)"};
    EXPECT_EQ(parameters, once + once) << "always through the first camera";
}

TEST_F(Reconnection, ABoardThatDoesNotOpenIsOneAndTheCamerasGoOn) {
    Connect();
    Recorder::Get().FailAlways("zr3DInitHidDev");
    EXPECT_EQ(Reconnect(), 1);
    EXPECT_EQ(Since(),
              (Calls{"ReleaseCamera(C1)", "CreateCamera(KV00R1)", "zr3DExitHidDev(B1)", kOpen}));
    EXPECT_TRUE(Says("the board does not open"));
    EXPECT_EQ(m_manager->Board().Project(PROJECT_PATTERN_1), STATUS_NOT_CONNECTED);
    const auto snaps = Recorder::Get().Count("SnapShot");
    EXPECT_TRUE(Recorder::Get().WaitForCount("SnapShot", snaps + 2)) << "the thread was resumed";
    // Later the board is back.
    Recorder::Get().FailAlways("zr3DInitHidDev", false);
    EXPECT_EQ(Reconnect(), 0);
    EXPECT_THAT(Since(), Contains("zr3DProject(B2, 0)")) << "6 is not remembered";
    EXPECT_TRUE(FramesFlow());
}

TEST_F(Reconnection, ASettingWithoutABoardIsNotConnectedAndNotRemembered) {
    Connect();
    Recorder::Get().FailAlways("zr3DInitHidDev");
    EXPECT_EQ(Reconnect(), 1);
    EXPECT_EQ(m_manager->Board().Project(PROJECT_PATTERN_1), STATUS_NOT_CONNECTED);
    EXPECT_EQ(int{m_manager->Board().SettingsToRestore().projectType}, 0);
}

TEST_F(Reconnection, ASilentBoardIsRestartedAndTriedOnceMoreThenItIsThree) {
    Connect();
    Recorder::Get().FailAlways("zr3DQueryCurrentStatus");
    EXPECT_EQ(Reconnect(), 3);
    EXPECT_EQ(Since(), (Calls{"ReleaseCamera(C1)", "CreateCamera(KV00R1)", "zr3DExitHidDev(B1)",
                              kOpen, "zr3DQueryCurrentStatus(B2)", "zr3DResetDevice(B2)",
                              "zr3DExitHidDev(B2)", kOpen, "zr3DQueryCurrentStatus(B3)"}));
    EXPECT_TRUE(Says("the board is silent"));
}

TEST_F(Reconnection, ABoardIsGivenSevenSecondsToRestart) {
    using Clock = std::chrono::steady_clock;
    Connect();
    Clock::time_point restarted;
    Clock::time_point openedAgain;
    Recorder::Get().OnCall("zr3DResetDevice", [&] { restarted = Clock::now(); });
    Recorder::Get().OnCall("zr3DInitHidDev", [&] { openedAgain = Clock::now(); });
    Recorder::Get().FailNth("zr3DQueryCurrentStatus", 1);
    EXPECT_EQ(Reconnect(), 0);
    EXPECT_GE(openedAgain - restarted, os::Scaled(std::chrono::seconds(7))) << "it may take longer";
}

TEST_F(Reconnection, AStopEndsTheWaitForTheRestartAndTheBoardIsNotTriedAgain) {
    Connect();
    const os::ScopedTimeScale slow(100);  // 700 s
    std::thread other;
    Recorder::Get().OnCall("zr3DResetDevice",
                           [&] { other = std::thread([&] { m_manager->RequestStop(); }); });
    Recorder::Get().FailAlways("zr3DQueryCurrentStatus");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(Reconnect(), 3);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(100));
    other.join();
    EXPECT_EQ(Since().back(), "zr3DResetDevice(B2)");
    EXPECT_TRUE(Says("stopped while the board restarts"));
    const auto snaps = Recorder::Get().Count("SnapShot");
    EXPECT_TRUE(Recorder::Get().WaitForCount("SnapShot", snaps + 2)) << "the thread was resumed";
}

TEST_F(Reconnection, ABoardThatAnswersAfterItsRestartIsReconnected) {
    Connect();
    Recorder::Get().FailNth("zr3DQueryCurrentStatus", 1);
    EXPECT_EQ(Reconnect(), 0);
    EXPECT_TRUE(Says("the board answers after its restart"));
    EXPECT_EQ(Since().back(), "zr3DEnableHeartbeat(B3, 1)");
    EXPECT_TRUE(FramesFlow());
}

TEST_F(Reconnection, ABoardThatIsGoneAfterItsRestartIsOne) {
    Connect();
    Recorder::Get().FailNth("zr3DQueryCurrentStatus", 1);
    Recorder::Get().FailNth("zr3DInitHidDev", 2);
    EXPECT_EQ(Reconnect(), 1);
    EXPECT_TRUE(Says("the board is gone after its restart"));
    EXPECT_EQ(Recorder::Get().Count("zr3DEnableHeartbeat"), 0u);
}

TEST_F(Reconnection, ABoardThatRefusesTheRestartIsNotTriedAgain) {
    Connect();
    Recorder::Get().FailAlways("zr3DQueryCurrentStatus");
    Recorder::Get().FailAlways("zr3DResetDevice");
    EXPECT_EQ(Reconnect(), 3);
    EXPECT_EQ(Since().back(), "zr3DResetDevice(B2)");
    EXPECT_TRUE(Says("the board refuses the restart"));
}

TEST_F(Reconnection, ACameraThatDoesNotReopenIsLeftOutAndTheOthersComeBack) {
    for (const char* call : {"OpenCamera", "GetDeviceType"}) {
        m_manager = std::make_unique<IManagerSync>();
        Recorder::Get().Reset();
        ConnectTwoCameras();
        Recorder::Get().FailNth(call, 1);
        EXPECT_EQ(Reconnect(), 0) << "a camera changes no result";
        EXPECT_TRUE(Says(std::string("the first of two cameras fails at ") + call));
        const Calls calls = Since();
        EXPECT_THAT(calls, Not(Contains("StartCamera(C3, 0)"))) << call;
        EXPECT_THAT(calls, Contains("StartCamera(C4, 0)")) << call;
        EXPECT_EQ(calls.back(), "zr3DEnableHeartbeat(B2, 1)");
        m_manager.reset();
        EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DExitHidDev(B2)") << "no hang at the end";
    }
}

TEST_F(Reconnection, ACameraThatCannotBeCreatedIsLeftOutToo) {
    ConnectTwoCameras();
    Recorder::Get().FailNth("CreateCamera", 1);
    EXPECT_EQ(Reconnect(), 0);
    EXPECT_EQ(Recorder::Get().Count("OpenCamera"), 3u) << "two at connect, one now";
    EXPECT_EQ(Reconnect(), 0) << "and comes back with the next one";
    EXPECT_EQ(Recorder::Get().Count("OpenCamera"), 5u);
}

}  // namespace
}  // namespace Korvex3Sync::tests
