#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "camera/Listener.h"
#include "camera/PhysicalCameraThread.h"
#include "platform/os/Clock.h"
#include "platform/os/TimeScale.h"
#include "recorder/Recorder.h"
#include "support/CaseName.h"
#include "support/Deadline.h"
#include "support/Golden.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using support::MatchesGolden;
using support::Output;
using Calls = std::vector<std::string>;

/// Frames that a camera's callback received.
class Frames {
public:
    static void Receive(void* const& context, const int& cameraId, unsigned char* const& image,
                        const int& width, const int& height, const int& channels) {
        auto* const frames = static_cast<Frames*>(context);
        std::lock_guard lock(frames->m_mutex);
        frames->m_seen.push_back({cameraId, image[0], width, height, channels});
        frames->m_changed.notify_all();
    }

    struct Frame {
        int cameraId;
        int firstByte;
        int width;
        int height;
        int channels;
        bool operator==(const Frame&) const = default;
    };

    bool WaitFor(std::size_t count) {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, kDeadline, [&] { return m_seen.size() >= count; });
    }
    std::vector<Frame> Seen() {
        std::lock_guard lock(m_mutex);
        return m_seen;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<Frame> m_seen;
};

class CameraThread : public testing::Test {
protected:
    CameraThread() { Recorder::Get().Reset(); }

    void Attach(int width, int height, int colorMode) {
        Recorder::Get().Attach({{"KV00R1", width, height, colorMode}});
    }
    void Open() {
        ASSERT_TRUE(m_camera.InializeCamera("KV00R1"));
        ASSERT_TRUE(m_camera.OpenCamera("KV00R1", 8, 4));
        m_camera.SetCameraID(3);
        m_camera.SetScanCallBackFunction(&Frames::Receive, &m_frames);
    }
    static void Push(unsigned char firstByte) {
        Recorder::Get().PushSnap({0, false, std::vector<unsigned char>(64, firstByte)});
    }

    SilentListener m_listener;
    Frames m_frames;
    CPhysicalCameraThread m_camera{&m_listener};
};

TEST_F(CameraThread, StartBeforeOpenGivesFalseAndNoThread) {
    ASSERT_TRUE(m_camera.InializeCamera("KV00R1"));
    EXPECT_FALSE(m_camera.StartThread());
    m_camera.StopThread();
    EXPECT_EQ(Recorder::Get().Count("UnlockOthers"), 0u) << "there was no thread to stop";
}

TEST_F(CameraThread, ACallbackSetBeforeTheCameraIdIsNotStored) {
    ASSERT_TRUE(m_camera.InializeCamera("KV00R1"));
    ASSERT_TRUE(m_camera.OpenCamera("KV00R1", 8, 4));
    m_camera.SetScanCallBackFunction(&Frames::Receive, &m_frames);
    ASSERT_TRUE(m_camera.StartThread());
    Push(1);
    ASSERT_TRUE(Recorder::Get().WaitForHandled(1));
    m_camera.StopThread();
    EXPECT_TRUE(m_frames.Seen().empty());
}

TEST_F(CameraThread, TheCameraIdIsIgnoredWithoutACamera) {
    m_camera.SetCameraID(3);
    testing::internal::CaptureStdout();
    m_camera.SetScanCallBackFunction(&Frames::Receive, &m_frames);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(CameraThread, HandsEachFrameToTheCallbackInOrder) {
    Open();
    ASSERT_TRUE(m_camera.StartThread());
    Push(1);
    Push(2);
    ASSERT_TRUE(m_frames.WaitFor(2));
    EXPECT_EQ(m_frames.Seen(), (std::vector<Frames::Frame>{{3, 1, 8, 4, 1}, {3, 2, 8, 4, 1}}));
}

struct Geometry {
    int width;
    int height;
    int colorMode;
    int channels;  // 0: rejected
};

class CameraThreadGeometry : public CameraThread, public testing::WithParamInterface<Geometry> {};

TEST_P(CameraThreadGeometry, DecidesWhetherAFrameIsDispatched) {
    const Geometry geometry = GetParam();
    Attach(geometry.width, geometry.height, geometry.colorMode);
    Open();
    Output output(Output::Of::kOtherThreads);
    ASSERT_TRUE(m_camera.StartThread());
    Push(1);
    ASSERT_TRUE(Recorder::Get().WaitForHandled(1));
    m_camera.StopThread();
    EXPECT_TRUE(MatchesGolden("GrabLoop", geometry.channels == 0 ? "wrong image data" : "frame",
                              output.End()));
    if (geometry.channels == 0) {
        EXPECT_TRUE(m_frames.Seen().empty());
    } else {
        EXPECT_EQ(m_frames.Seen(),
                  (std::vector<Frames::Frame>{
                      {3, 1, geometry.width, geometry.height, geometry.channels}}));
    }
}

std::string SizeAndMode(const testing::TestParamInfo<Geometry>& row) {
    return support::CaseName(std::to_string(row.param.width) + " by " +
                             std::to_string(row.param.height) + " mode " +
                             std::to_string(row.param.colorMode));
}

INSTANTIATE_TEST_SUITE_P(Sizes, CameraThreadGeometry,
                         testing::Values(Geometry{2000, 2000, 17, 3}, Geometry{2001, 10, 1, 0},
                                         Geometry{10, 2001, 1, 0}, Geometry{10, 0, 1, 0},
                                         Geometry{0, 10, 1, 0}, Geometry{-1, 10, 1, 0},
                                         Geometry{8, 4, 18, 1}, Geometry{8, 4, 2, 2},
                                         Geometry{8, 4, 16, 1}),
                         SizeAndMode);

TEST_F(CameraThread, AResolutionThatCannotBeReadRejectsTheFrame) {
    Recorder::Get().FailAlways("GetResolution");
    Open();
    Output output(Output::Of::kOtherThreads);
    ASSERT_TRUE(m_camera.StartThread());
    Push(1);
    ASSERT_TRUE(Recorder::Get().WaitForHandled(1));
    m_camera.StopThread();
    EXPECT_TRUE(MatchesGolden("GrabLoop", "wrong image data", output.End()));
}

TEST_F(CameraThread, CloseForgetsTheCallbackUntilItIsSetAgain) {
    Open();
    m_camera.CloseCamera();
    ASSERT_TRUE(m_camera.OpenCamera("KV00R1", 8, 4));
    ASSERT_TRUE(m_camera.StartThread());
    Push(1);
    ASSERT_TRUE(Recorder::Get().WaitForHandled(1));
    EXPECT_TRUE(m_frames.Seen().empty());
    m_camera.SetScanCallBackFunction(&Frames::Receive, &m_frames);
    Push(2);
    EXPECT_TRUE(m_frames.WaitFor(1));
}

TEST_F(CameraThread, ASnapWithANullBufferFailsButLogsNothing) {
    Open();
    Output output(Output::Of::kOtherThreads);
    output.ShowFailedSnaps();
    Recorder::Get().PushSnap({0, true, {}});
    ASSERT_TRUE(m_camera.StartThread());
    ASSERT_TRUE(Recorder::Get().WaitForHandled(1));
    m_camera.StopThread();
    EXPECT_TRUE(MatchesGolden("GrabLoop", "snap without a buffer", output.End()));
    EXPECT_TRUE(m_frames.Seen().empty());
}

TEST_F(CameraThread, AFailedSnapWithABufferIsLoggedWithItsResult) {
    Open();
    Output output(Output::Of::kOtherThreads);
    Recorder::Get().PushSnap({-9, false, std::vector<unsigned char>(64, 1)});
    ASSERT_TRUE(m_camera.StartThread());
    ASSERT_TRUE(Recorder::Get().WaitForHandled(1));
    m_camera.StopThread();
    EXPECT_TRUE(MatchesGolden("GrabLoop", "failed snap with a buffer", output.End()));
    EXPECT_TRUE(m_frames.Seen().empty());
}

TEST_F(CameraThread, FailedSnapsNeverEndTheThread) {
    Open();
    Recorder::Get().FailAlways("SnapShot");
    for (int i = 0; i < 700; ++i) {
        Push(1);
    }
    ASSERT_TRUE(m_camera.StartThread());
    ASSERT_TRUE(Recorder::Get().WaitForCount("SnapShot", 701));
    Recorder::Get().FailAlways("SnapShot", false);
    // The snap that runs now was told to fail; the next one is not.
    ASSERT_TRUE(Recorder::Get().WaitForCount("SnapShot", Recorder::Get().Count("SnapShot") + 1));
    Push(5);
    EXPECT_TRUE(m_frames.WaitFor(1));
}

TEST_F(CameraThread, APauseHoldsFramesBackAndResumeLetsThemThrough) {
    Open();
    ASSERT_TRUE(m_camera.StartThread());
    ASSERT_TRUE(Recorder::Get().WaitForCount("SnapShot", 1));
    m_camera.PauseThread();
    const auto before = Recorder::Get().Count("SnapShot(C1)");
    {
        // For as long as a camera that is not paused takes for several snaps.
        CPhysicalCameraThread other(&m_listener);
        ASSERT_TRUE(other.InializeCamera("KV00R1"));
        ASSERT_TRUE(other.OpenCamera("KV00R1", 8, 4));
        ASSERT_TRUE(other.StartThread());
        ASSERT_TRUE(Recorder::Get().WaitForCount("SnapShot(C2)", 5));
    }
    EXPECT_EQ(Recorder::Get().Count("SnapShot(C1)"), before);
    Push(1);
    // The pausing thread may use the camera and the pause lock meanwhile.
    m_camera.SetScanCallBackFunction(&Frames::Receive, &m_frames);
    EXPECT_TRUE(m_camera.SetExposure(5));
    m_camera.ResumeThread();
    EXPECT_TRUE(m_frames.WaitFor(1));
}

TEST_F(CameraThread, APauseThatAnotherThreadMadeIsEndedBeforeDestruction) {
    Open();
    ASSERT_TRUE(m_camera.StartThread());
    std::thread([&] { m_camera.PauseThread(); }).join();
    m_camera.ResetStatusToInitialize();
    EXPECT_TRUE(m_camera.StopThread());
}

TEST_F(CameraThread, TheInstanceOfACameraThatAnotherThreadPausedCanBeReplaced) {
    Open();
    ASSERT_TRUE(m_camera.StartThread());
    std::thread([&] { m_camera.PauseThread(); }).join();
    EXPECT_TRUE(m_camera.ReleaseCamera());
    EXPECT_TRUE(m_camera.InializeCamera(nullptr));
    EXPECT_TRUE(m_camera.ReOpenCamera());
    m_camera.ResumeThread();
    Push(1);
    EXPECT_TRUE(m_frames.WaitFor(1));
}

TEST_F(CameraThread, StopEndsWithinOneSnapAndUnlocksTheOthers) {
    Open();
    ASSERT_TRUE(m_camera.StartThread());
    ASSERT_TRUE(Recorder::Get().WaitForCount("SnapShot", 1));
    EXPECT_TRUE(m_camera.StopThread());
    const auto snaps = Recorder::Get().Count("SnapShot");
    EXPECT_EQ(Recorder::Get().Calls().back(), "UnlockOthers(C1)");
    EXPECT_TRUE(m_camera.StopThread()) << "stopping twice is fine";
    EXPECT_EQ(Recorder::Get().Count("UnlockOthers"), 1u);
    EXPECT_EQ(Recorder::Get().Count("SnapShot"), snaps);
}

TEST_F(CameraThread, ALoopWithoutACameraWaitsInsteadOfSpinning) {
    const auto counters = std::make_shared<GrabCounters>();
    m_camera.CountInto(counters);
    Open();
    ASSERT_TRUE(m_camera.StartThread());
    m_camera.PauseThread();
    m_camera.ReleaseCamera();
    const std::uint64_t before = counters->failedSnaps;
    const auto begin = std::chrono::steady_clock::now();
    m_camera.ResumeThread();
    ASSERT_TRUE(support::WaitUntil([&] { return counters->failedSnaps >= before + 4; }));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 3 * std::chrono::milliseconds(100))
        << "as long after each as a snap without a frame takes";
    m_camera.StopThread();
}

TEST_F(CameraThread, StoppingEndsTheWaitOfALoopWithoutACamera) {
    const auto counters = std::make_shared<GrabCounters>();
    m_camera.CountInto(counters);
    Open();
    ASSERT_TRUE(m_camera.StartThread());
    m_camera.PauseThread();
    m_camera.ReleaseCamera();
    m_camera.ResumeThread();
    const os::ScopedTimeScale slow(300);  // 30 s after each look for a camera
    const std::uint64_t before = counters->failedSnaps;
    ASSERT_TRUE(support::WaitUntil([&] { return counters->failedSnaps > before; }));
    const auto begin = std::chrono::steady_clock::now();
    m_camera.StopThread();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(15));
}

TEST_F(CameraThread, WhileACallerUsesTheCameraTheLoopLeavesItAloneAfterEachSnap) {
    const os::ScopedTimeScale slow(30);  // longer than a snap without a frame
    std::mutex mutex;
    std::vector<std::chrono::steady_clock::time_point> snaps;
    const auto begun = [&] {
        std::lock_guard lock(mutex);
        return snaps.size();
    };
    Recorder::Get().OnCall("SnapShot", [&] {
        std::lock_guard lock(mutex);
        snaps.push_back(std::chrono::steady_clock::now());
    });
    std::size_t first = 0;
    Recorder::Get().OnCall("SetExposureTime", [&] {
        first = begun();  // the next snap, and the pause after it, lie within the call
        EXPECT_TRUE(support::WaitUntil([&] { return begun() >= first + 2; }));
    });
    Open();
    ASSERT_TRUE(m_camera.StartThread());
    EXPECT_TRUE(m_camera.SetExposure(5));
    m_camera.StopThread();
    EXPECT_GE(snaps[first + 1] - snaps[first], os::Scaled(std::chrono::milliseconds(10)));
}

TEST_F(CameraThread, OpeningARunningCameraStopsAndClosesItFirst) {
    Open();
    ASSERT_TRUE(m_camera.StartThread());
    ASSERT_TRUE(Recorder::Get().WaitForCount("SnapShot", 1));
    ASSERT_TRUE(m_camera.OpenCamera("KV00R1", 8, 4));
    EXPECT_EQ(Recorder::Get().Calls(),
              (Calls{"CreateCamera(KV00R1)", "OpenCamera(C1, KV00R1, 8, 4)", "GetColorMode(C1)",
                     "UnlockOthers(C1)", "CloseCamera(C1)", "OpenCamera(C1, KV00R1, 8, 4)",
                     "GetColorMode(C1)"}));
}

TEST_F(CameraThread, ReopensInPlaceWithTheStoredSerialAndSize) {
    Open();
    EXPECT_TRUE(m_camera.ReOpenCamera());
    const Calls calls = Recorder::Get().Calls();
    EXPECT_EQ(Calls(calls.end() - 3, calls.end()),
              (Calls{"CloseCamera(C1)", "OpenCamera(C1, KV00R1, 8, 4)", "GetDeviceType(C1)"}));
}

TEST_F(CameraThread, AReopenFailsWithoutACameraWhenItDoesNotOpenOrHasNoType) {
    EXPECT_FALSE(m_camera.ReOpenCamera());
    Open();
    Recorder::Get().FailNth("OpenCamera", 1);
    EXPECT_FALSE(m_camera.ReOpenCamera());
    Recorder::Get().FailNth("GetDeviceType", 1);
    EXPECT_FALSE(m_camera.ReOpenCamera());
}

TEST_F(CameraThread, AReopenFailsWhenTheDeviceTypeIsNotPositive) {
    for (const int type : {0, -1, 1, 2}) {
        recorder::Camera camera{"KV00R1"};
        camera.deviceType = type;
        Recorder::Get().Attach({camera});
        Open();
        EXPECT_EQ(m_camera.ReOpenCamera(), type > 0) << type;
        m_camera.CloseCamera();
        m_camera.ReleaseCamera();
    }
}

TEST_F(CameraThread, SizesThatAreNoSizesAreHandedToTheLibraryWithoutHarm) {
    const int sizes[][2] = {{50000, 50000}, {-1, 10}, {INT_MIN, INT_MIN}, {INT_MAX, 3}, {0, 0}};
    for (const auto& [width, height] : sizes) {
        ASSERT_TRUE(m_camera.InializeCamera("KV00R1"));
        EXPECT_TRUE(m_camera.OpenCamera("KV00R1", width, height));
        m_camera.CloseCamera();
        m_camera.ReleaseCamera();
    }
}

TEST_F(CameraThread, InitialisesFromTheStoredSerialWhenNoneIsGiven) {
    EXPECT_FALSE(m_camera.InializeCamera(nullptr)) << "no serial is stored yet";
    Open();
    m_camera.CloseCamera();
    m_camera.ReleaseCamera();
    EXPECT_TRUE(m_camera.InializeCamera(nullptr));
    EXPECT_EQ(Recorder::Get().Calls().back(), "CreateCamera(KV00R1)");
}

TEST_F(CameraThread, AStartThatTheLibraryRefusesFails) {
    ASSERT_TRUE(m_camera.InializeCamera("KV00R1"));
    Recorder::Get().FailAlways("StartCamera");
    Output output;
    EXPECT_FALSE(m_camera.StartCamera());
    EXPECT_TRUE(MatchesGolden("StartCamera", "refused", output.End()));
}

TEST_F(CameraThread, DestructionStopsClosesAndReleases) {
    {
        CPhysicalCameraThread camera(&m_listener);
        ASSERT_TRUE(camera.InializeCamera("KV00R1"));
        ASSERT_TRUE(camera.OpenCamera("KV00R1", 8, 4));
        ASSERT_TRUE(camera.StartCamera());
        ASSERT_TRUE(camera.StartThread());
    }
    EXPECT_EQ(
        Recorder::Get().Calls(),
        (Calls{"CreateCamera(KV00R1)", "OpenCamera(C1, KV00R1, 8, 4)", "GetColorMode(C1)",
               "StartCamera(C1, 0)", "UnlockOthers(C1)", "CloseCamera(C1)", "ReleaseCamera(C1)"}));
}

}  // namespace
}  // namespace Korvex3Sync::tests
