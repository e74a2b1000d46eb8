#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/os/TimeScale.h"
#include "sync/PartsAlone.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using Calls = std::vector<std::string>;

/// The cameras of a connection without a manager.
class CameraSetAlone : public testing::Test {
protected:
    CameraSetAlone() { Recorder::Get().Reset(); }
    int Count() {
        int count = -1;
        EXPECT_EQ(m_head.cameras.GetConnectCameraCount(count), STATUS_SUCCESS);
        return count;
    }
    bool Snaps() {
        return Recorder::Get().WaitForCount("SnapShot", Recorder::Get().Count("SnapShot") + 2);
    }

    os::ScopedTimeScale m_scale{0.05};
    CamerasAlone m_head;
};

TEST_F(CameraSetAlone, CountsTheCamerasThatAreOpen) {
    EXPECT_EQ(Count(), 0);
    Recorder::Get().FailNth("OpenCamera", 1);
    EXPECT_EQ(m_head.Open(), 2);
    EXPECT_EQ(Count(), 0);
    ASSERT_EQ(m_head.Open(), 0);
    EXPECT_EQ(Count(), 1);
    m_head.cameras.Close();
    EXPECT_EQ(Count(), 0);
}

TEST_F(CameraSetAlone, CloseEndsTheGrabThreadThenClosesAndReleasesTheCamera) {
    ASSERT_EQ(m_head.Open(), 0);
    EXPECT_TRUE(Snaps());
    m_head.cameras.Close();
    const Calls calls = Recorder::Get().Calls();
    EXPECT_EQ(Calls(calls.end() - 3, calls.end()),
              (Calls{"UnlockOthers(C1)", "CloseCamera(C1)", "ReleaseCamera(C1)"}));
    const auto snaps = Recorder::Get().Count("SnapShot");
    m_head.cameras.Close();
    EXPECT_EQ(Recorder::Get().Calls(), calls) << "nothing is left to close";
    EXPECT_EQ(Recorder::Get().Count("SnapShot"), snaps);
}

TEST_F(CameraSetAlone, PausedOnesAreMadeAnewAndSnapOnlyOnceTheyAreReopened) {
    ASSERT_EQ(m_head.Open(), 0);
    m_head.cameras.PauseAndRecreate();
    const auto snaps = Recorder::Get().Count("SnapShot");
    EXPECT_EQ(Recorder::Get().Calls().back(), "CreateCamera(KV00R1)");
    m_head.cameras.ReOpen();
    EXPECT_GE(Recorder::Get().Count("SnapShot"), snaps);
    EXPECT_TRUE(Snaps());
    EXPECT_EQ(Recorder::Get().Calls().back(), "StartCamera(C2, 0)");
}

TEST_F(CameraSetAlone, WhatWasSetIsWrittenBackWhenTheCamerasAreReopened) {
    ASSERT_EQ(m_head.Open(), 0);
    m_head.cameras.SetCameraExposureAndGain(1, 8.5, 3);
    m_head.cameras.SetCameraGain(0, 5);  // no exposure: not written back
    m_head.cameras.PauseAndRecreate();
    m_head.cameras.ReOpen();
    EXPECT_EQ(Recorder::Get().Calls().back(), "SetCameraIntParam(C2, 5, 3413)");
    EXPECT_EQ(Recorder::Get().Count("SetCameraIntParam(C2, 5, 3413)"), 1u);
    EXPECT_EQ(m_head.cameras.ParametersToRestore().gains, (std::map<int, int>{{0, 5}, {1, 3}}));
}

TEST_F(CameraSetAlone, ReleasedOnesStayAwayUntilTheyAreReopened) {
    ASSERT_EQ(m_head.Open(), 0);
    EXPECT_EQ(m_head.cameras.ReleaseCamera(), STATUS_SUCCESS);
    EXPECT_EQ(Recorder::Get().Calls().back(), "ReleaseCamera(C1)");
    EXPECT_EQ(Count(), 1) << "the list stays";
    m_head.cameras.PauseAndRecreate();
    m_head.cameras.ReOpen();
    EXPECT_TRUE(Snaps());
}

TEST_F(CameraSetAlone, AResetStateLeavesTheGrabThreadsRunning) {
    ASSERT_EQ(m_head.Open(), 0);
    m_head.cameras.ResetState();
    EXPECT_EQ(Recorder::Get().Calls().back(), "ResetCameraState(C1)");
    EXPECT_TRUE(Snaps());
}

TEST_F(CameraSetAlone, WhatMeetsAClosingPassesOverTheCamerasThatAreGone) {
    Recorder::Get().Attach({{"AAA"}, {"BBB"}});
    SerialList serials{"AAA", "BBB"};
    ASSERT_EQ(m_head.cameras.OpenCameras(serials.Pointers(), {8, 8}, {4, 4}), 0);
    m_head.cameras.SetCameraExposureAndGain(1, 8.5, 3);
    bool met = false;
    Recorder::Get().OnCall("UnlockOthers", [&] {
        if (Recorder::Get().Count("ReleaseCamera(C1)") == 0 || std::exchange(met, true)) {
            return;  // the first one is not gone yet
        }
        // As a status callback does on its thread.
        m_head.cameras.ResetState();
        m_head.cameras.PauseAndRecreate();
        m_head.cameras.ReOpen();
        m_head.cameras.Resume();
        EXPECT_EQ(m_head.cameras.ReleaseCamera(), STATUS_SUCCESS);
        double exposure = 0.0;
        int gain = 0;
        EXPECT_EQ(m_head.cameras.GetCameraExposureAndGain(0, exposure, gain), STATUS_SUCCESS);
    });
    m_head.cameras.Close();
    EXPECT_TRUE(met);
    EXPECT_EQ(Recorder::Get().Count("ResetCameraState"), 1u) << "the one that is still there";
    EXPECT_EQ(Recorder::Get().Handles(), 0u);
    EXPECT_EQ(Count(), 0);
}

}  // namespace
}  // namespace Korvex3Sync::tests
