#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <new>
#include <thread>
#include <utility>

#include "sync/ReconnectedManager.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using testing::Contains;

/// A reconnection and what happens around it: closed cameras, the status thread, other threads.
class AroundReconnection : public ReconnectedManager {};

TEST_F(AroundReconnection, CamerasThatWereClosedStayClosedUntilAReconnection) {
    Connect();
    support::Output output;
    EXPECT_EQ(m_manager->Cameras().ReleaseCamera(), STATUS_SUCCESS);
    EXPECT_TRUE(support::MatchesGolden("ReleaseCamera", "released", output.End()));
    EXPECT_EQ(Since(), Calls{"ReleaseCamera(C1)"});
    const auto snaps = Recorder::Get().Count("SnapShot");
    EXPECT_EQ(m_manager->Cameras().ReleaseCamera(), STATUS_SUCCESS) << "again";
    EXPECT_EQ(Since(), Calls{"ReleaseCamera(C1)"});
    EXPECT_EQ(m_manager->Board().Project(PROJECT_OFF), STATUS_SUCCESS) << "the board is there";
    EXPECT_EQ(Recorder::Get().Count("SnapShot"), snaps);
    std::thread([&] { EXPECT_EQ(Reconnect(), 0); }).join();  // not the thread that closed them
    EXPECT_EQ(Recorder::Get().Count("ReleaseCamera"), 1u) << "nothing was left to release";
    EXPECT_TRUE(FramesFlow());
}

TEST_F(AroundReconnection, ClosedCamerasDoNotKeepTheDestructor) {
    Connect();
    std::thread([&] { m_manager->Cameras().ReleaseCamera(); }).join();
    m_manager.reset();
    EXPECT_EQ(Recorder::Get().Calls().back(), "zr3DExitHidDev(B1)");
}

TEST_F(AroundReconnection, ALostBoardStaysMarkedUntilAGoodPollButIsWrittenTo) {
    Connect();
    Recorder::Get().FailAlways("zr3DQueryCurrentStatus");
    m_manager->Status().SetStatusCallBackFunction(&IgnoreStatus, &m_frames);
    // The second poll from here begins only when the first has been judged.
    ASSERT_TRUE(Recorder::Get().WaitForCount("zr3DQueryCurrentStatus",
                                             Recorder::Get().Count("zr3DQueryCurrentStatus") + 2));
    ASSERT_EQ(m_manager->Board().Project(PROJECT_PATTERN_1), STATUS_FAILED);
    // The reconnection holds the device lock from the one call to the other: no poll sees it.
    Recorder::Get().OnCall("zr3DInitHidDev",
                           [] { Recorder::Get().FailAlways("zr3DQueryCurrentStatus", false); });
    Recorder::Get().OnCall("zr3DOpenOrCloseStrobeFlicker",
                           [] { Recorder::Get().FailAlways("zr3DQueryCurrentStatus"); });
    EXPECT_EQ(Reconnect(), 0);
    EXPECT_THAT(Since(), Contains("zr3DProject(B2, 1)"));
    EXPECT_EQ(m_manager->Board().Project(PROJECT_PATTERN_2), STATUS_FAILED);
    Recorder::Get().FailAlways("zr3DQueryCurrentStatus", false);
    const auto polls = Recorder::Get().Count("zr3DQueryCurrentStatus");
    ASSERT_TRUE(Recorder::Get().WaitForCount("zr3DQueryCurrentStatus", polls + 3));
    EXPECT_EQ(m_manager->Board().Project(PROJECT_PATTERN_2), STATUS_SUCCESS);
}

TEST_F(AroundReconnection, TheStatusThreadLeavesTheBoardAloneWhileItRestarts) {
    Connect();
    m_manager->Status().SetStatusCallBackFunction(&IgnoreStatus, &m_frames);
    const auto polls = [] {
        const Calls others = Recorder::Get().CallsOfOthers();
        return std::count_if(others.begin(), others.end(), [](const std::string& call) {
            return call.starts_with("zr3DQueryCurrentStatus");
        });
    };
    long before = -1;
    long after = -1;
    Recorder::Get().OnCall("zr3DResetDevice", [&] { before = polls(); });
    Recorder::Get().OnCall("zr3DInitHidDev", [&] { after = polls(); });
    Recorder::Get().FailAlways("zr3DQueryCurrentStatus");
    EXPECT_EQ(Reconnect(), 3);
    ASSERT_GE(before, 0);
    // 35 polls would fit; one may have been past the flag when it was set.
    EXPECT_LE(after, before + 1);
    ASSERT_TRUE(Recorder::Get().WaitForCount("zr3DQueryCurrentStatus",
                                             Recorder::Get().Count("zr3DQueryCurrentStatus") + 3))
        << "it goes on afterwards";
}

TEST_F(AroundReconnection, ASecondOneDoesNotWakeTheStatusThreadForTheFirst) {
    Connect();
    m_manager->Status().SetStatusCallBackFunction(&IgnoreStatus, &m_frames);
    bool inside = false;
    std::size_t before = 0;
    std::size_t after = 0;
    const auto polls = [] { return Recorder::Get().CallsOfOthers().size(); };
    Recorder::Get().OnCall("zr3DResetDevice", [&] {
        // The first one is about to wait for the board; another begins and ends meanwhile.
        if (std::exchange(inside, true)) {
            return;
        }
        Recorder::Get().FailAlways("zr3DQueryCurrentStatus", false);
        EXPECT_EQ(m_manager->ReConnectDeviceEx(), 0);
        before = polls();
        Recorder::Get().OnCall("zr3DInitHidDev", [&] { after = polls(); });
    });
    Recorder::Get().FailAlways("zr3DQueryCurrentStatus");
    EXPECT_EQ(Reconnect(), 0);
    ASSERT_GT(after, 0u) << "the first one went on";
    EXPECT_LE(after, before + 1) << "35 polls would fit; one may have been past the mark";
    const auto count = Recorder::Get().Count("zr3DQueryCurrentStatus");
    EXPECT_TRUE(Recorder::Get().WaitForCount("zr3DQueryCurrentStatus", count + 2))
        << "it goes on afterwards";
    EXPECT_TRUE(FramesFlow());
}

TEST_F(AroundReconnection, AnOperationThatMeetsItWaitsForItsEnd) {
    Connect();
    std::future<RETSTATUS> operation;
    Recorder::Get().OnCall("zr3DInitHidDev", [&] {  // the board is closed just now
        operation = std::async(std::launch::async,
                               [&] { return m_manager->Board().SetLaserLineDutioRatio(77); });
        EXPECT_EQ(operation.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    });
    EXPECT_EQ(Reconnect(), 0);
    EXPECT_EQ(operation.get(), STATUS_SUCCESS);
    EXPECT_EQ(m_manager->Board().SettingsToRestore().laserLineDuty, 77);
}

TEST_F(AroundReconnection, AnOperationThatMeetsOneThatFailsIsNotRemembered) {
    Connect();
    std::future<RETSTATUS> operation;
    Recorder::Get().OnCall("zr3DInitHidDev", [&] {
        operation = std::async(std::launch::async,
                               [&] { return m_manager->Board().SetLaserLineDutioRatio(77); });
    });
    Recorder::Get().FailAlways("zr3DInitHidDev");
    EXPECT_EQ(Reconnect(), 1);
    EXPECT_EQ(operation.get(), STATUS_NOT_CONNECTED);
    EXPECT_EQ(m_manager->Board().SettingsToRestore().laserLineDuty, 100);
}

TEST_F(AroundReconnection, OneThatRunsOutOfMemoryLetsEverythingGoOn) {
    Connect();
    m_manager->Status().SetStatusCallBackFunction(&IgnoreStatus, &m_frames);
    Recorder::Get().OnCall("GetDeviceType", [] { throw std::bad_alloc(); });
    EXPECT_THROW(Reconnect(), std::bad_alloc);
    EXPECT_TRUE(FramesFlow()) << "the cameras are not paused";
    const auto polls = Recorder::Get().Count("zr3DQueryCurrentStatus");
    EXPECT_TRUE(Recorder::Get().WaitForCount("zr3DQueryCurrentStatus", polls + 2))
        << "the status thread is not parked";
    Recorder::Get().OnCall("GetDeviceType", {});
    EXPECT_EQ(Reconnect(), 0);
}

TEST_F(AroundReconnection, TwoResetsAtOnceOpenTheBoardOnce) {
    for (int round = 0; round < 20; ++round) {
        Recorder::Get().Reset();
        IManagerSync manager;
        std::thread other([&] { manager.Board().ResetBoard(false, false); });
        manager.Board().ResetBoard(false, false);
        other.join();
        ASSERT_EQ(Recorder::Get().Count("zr3DInitHidDev"), 1u);
    }
}

TEST_F(AroundReconnection, RunsBesideEverythingElseAndEnds) {
    Connect();
    m_manager->Status().SetStatusCallBackFunction(&IgnoreStatus, &m_frames);
    m_manager->Frames().SetScanCallBackFunction([](const void* const&, std::vector<unsigned char*>&,
                                                   const int&, const int&, std::vector<int>&) {},
                                                nullptr);
    std::atomic<bool> end{false};
    std::thread frames([&] {
        for (unsigned char key = 0; !end; ++key) {
            const auto taken = Recorder::Get().Count("SnapShot");
            Recorder::Get().PushSnap({0, false, support::MonoFrame(32, 1, 2, key)});
            Recorder::Get().WaitForCount("SnapShot", taken + 1);
        }
    });
    std::thread operations([&] {
        while (!end) {
            int number = 0;
            double exposure = 0.0;
            m_manager->Board().SetVideoTriggerPeriod(5);
            m_manager->Cameras().GetCameraExposureAndGain(0, exposure, number);
            m_manager->Cameras().GetCameraResolution(0, number, number);
            m_manager->Board().ResetBoard(true, false);
        }
    });
    std::thread second([&] {
        while (!end) {
            m_manager->ReConnectDeviceEx();
            m_manager->Cameras().ReleaseCamera();
        }
    });
    for (int i = 0; i < 10; ++i) {
        EXPECT_EQ(m_manager->ReConnectDeviceEx(), 0);
    }
    end = true;
    frames.join();
    operations.join();
    second.join();
    EXPECT_EQ(m_manager->ReConnectDeviceEx(), 0);
    EXPECT_EQ(m_manager->Board().SetVideoTriggerPeriod(6), STATUS_SUCCESS);
}

}  // namespace
}  // namespace Korvex3Sync::tests
