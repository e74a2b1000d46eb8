#include <gtest/gtest.h>

#include <memory>
#include <thread>

#include "camera/Listener.h"
#include "camera/PhysicalCameraThread.h"
#include "recorder/Recorder.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;

class GrabCounting : public testing::Test {
protected:
    GrabCounting() { Recorder::Get().Reset(); }
    void Attach(int width, int height) { Recorder::Get().Attach({{"KV00R1", width, height, 16}}); }
    /// Counts what a camera makes of these snaps.
    void Grab(const std::vector<recorder::Snap>& snaps) {
        CPhysicalCameraThread camera(&m_listener);
        camera.CountInto(m_counters);
        ASSERT_TRUE(camera.InializeCamera("KV00R1"));
        ASSERT_TRUE(camera.OpenCamera("KV00R1", 8, 4));
        for (const auto& snap : snaps) {
            Recorder::Get().PushSnap(snap);
        }
        m_pushed += snaps.size();
        ASSERT_TRUE(camera.StartThread());
        ASSERT_TRUE(Recorder::Get().WaitForHandled(m_pushed));
        camera.StopThread();
    }
    static recorder::Snap Good() { return {0, false, std::vector<unsigned char>(64, 1)}; }
    static recorder::Snap Refused() { return {-9, false, std::vector<unsigned char>(64, 1)}; }
    static recorder::Snap Empty() { return {0, true, {}}; }

    SilentListener m_listener;
    const std::shared_ptr<GrabCounters> m_counters = std::make_shared<GrabCounters>();

private:
    std::uint64_t m_pushed = 0;
};

TEST_F(GrabCounting, AcceptedFramesCountWithoutACallbackToo) {
    Grab({Good(), Good(), Good()});
    EXPECT_EQ(m_counters->framesAccepted, 3u);
    EXPECT_EQ(m_counters->refusedFrames, 0u);
    EXPECT_EQ(m_counters->rejectedGeometry, 0u);
}

TEST_F(GrabCounting, ARefusedFrameIsOneOfTheFailedSnaps) {
    Grab({Refused(), Good(), Refused()});
    EXPECT_EQ(m_counters->framesAccepted, 1u);
    EXPECT_EQ(m_counters->refusedFrames, 2u);
    EXPECT_GE(m_counters->failedSnaps, 2u);
}

TEST_F(GrabCounting, ASnapWithoutAFrameIsAFailureAndNoRefusal) {
    Grab({Empty(), Empty()});
    EXPECT_GE(m_counters->failedSnaps, 2u);
    EXPECT_EQ(m_counters->refusedFrames, 0u);
    EXPECT_EQ(m_counters->framesAccepted, 0u);
}

TEST_F(GrabCounting, ACameraThatWasReleasedRefusesNothing) {
    CPhysicalCameraThread camera(&m_listener);
    camera.CountInto(m_counters);
    ASSERT_TRUE(camera.InializeCamera("KV00R1"));
    ASSERT_TRUE(camera.OpenCamera("KV00R1", 8, 4));
    // Each snap gives a frame, so that the last one before the pause does.
    Recorder::Get().OnCall("SnapShot", [] { Recorder::Get().PushSnap(Good()); });
    ASSERT_TRUE(camera.StartThread());
    ASSERT_TRUE(Recorder::Get().WaitForHandled(1));
    camera.PauseThread();
    ASSERT_EQ(m_counters->failedSnaps, 0u);
    camera.ReleaseCamera();
    camera.ResumeThread();
    while (m_counters->failedSnaps == 0) {
        std::this_thread::yield();
    }
    camera.StopThread();
    EXPECT_EQ(m_counters->refusedFrames, 0u);
}

TEST_F(GrabCounting, EverySnapIsCountedOnce) {
    Grab({Good(), Refused(), Empty(), Good()});
    EXPECT_EQ(m_counters->framesAccepted + m_counters->failedSnaps,
              Recorder::Get().Count("SnapShot"));
}

TEST_F(GrabCounting, AFrameOfAnImpossibleSizeIsRejectedAndNoFailure) {
    Attach(2001, 10);
    Grab({Good(), Good()});
    EXPECT_EQ(m_counters->rejectedGeometry, 2u);
    EXPECT_EQ(m_counters->framesAccepted, 0u);
    EXPECT_EQ(m_counters->failedSnaps + 2, Recorder::Get().Count("SnapShot"));
}

TEST_F(GrabCounting, TheNextCameraGoesOnCountingWhereTheFormerEnded) {
    Grab({Good()});
    Grab({Good(), Refused()});
    EXPECT_EQ(m_counters->framesAccepted, 2u);
    EXPECT_EQ(m_counters->refusedFrames, 1u);
}

}  // namespace
}  // namespace Korvex3Sync::tests
