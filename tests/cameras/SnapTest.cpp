#include <atomic>
#include <chrono>
#include <thread>

#include "cameras/HeadFixture.h"
#include "platform/os/Clock.h"
#include "platform/os/Event.h"
#include "virtual_head/Unpacked.h"

namespace Korvex3Sync::tests {
namespace {

using namespace std::chrono_literals;
using namespace zr3DCamera;

class SnapTest : public HeadFixture {
protected:
    static Unpacked Snap(void* handle) {
        unsigned char* image = nullptr;
        EXPECT_EQ(SnapShot(handle, image), 0);
        return image == nullptr ? Unpacked() : Unpack(image, kPixels);
    }

    static void ExpectNoFrame(void* handle) {
        unsigned char byte = 0;
        unsigned char* image = &byte;
        const auto start = std::chrono::steady_clock::now();
        EXPECT_NE(SnapShot(handle, image), 0);
        EXPECT_GE(std::chrono::steady_clock::now() - start, 100ms) << "a loop of snaps would spin";
        EXPECT_EQ(image, nullptr);
    }

    /// Snaps on a separate thread until told to stop, while `work` runs.
    template <class Work>
    static void Beside(void* handle, Work work) {
        std::atomic<bool> stop = false;
        os::Event first;
        std::thread grab([&] {
            while (!stop) {
                unsigned char* image = nullptr;
                const int result = SnapShot(handle, image);
                EXPECT_EQ(result == 0, image != nullptr);
                first.Set();
            }
        });
        first.Wait();
        work();
        stop = true;
        grab.join();
    }
};

TEST_F(SnapTest, FramesOfATriggerModeComeInOrderWithTheirKeys) {
    void* handle = CreateStarted();
    Trigger(6, 5);
    for (int key = 0; key < 10; ++key) {
        const auto mono = Snap(handle);
        EXPECT_FALSE(mono.marker);
        EXPECT_EQ(mono.key, key);
        const auto color = Snap(handle);
        EXPECT_TRUE(color.marker);
        EXPECT_EQ(color.key, key);
    }
    ReleaseCamera(handle);
}

TEST_F(SnapTest, CameraWithoutAFrameBlocksForItsLimitAndFails) {
    void* handle = Create();
    ExpectNoFrame(handle);  // not open
    ASSERT_EQ(OpenCamera(handle, 0, 0, 0), 0);
    Trigger(4);
    ExpectNoFrame(handle);  // not started
    ASSERT_EQ(StartCamera(handle, 0.0), 0);
    ExpectNoFrame(handle);  // not triggered
    ASSERT_EQ(CloseCamera(handle), 0);
    ExpectNoFrame(handle);  // closed
    virtual_head::WithdrawVirtualHead();
    ExpectNoFrame(handle);  // lost
    ReleaseCamera(handle);
}

TEST_F(SnapTest, StartingTwiceGivesEachFrameOnce) {
    void* handle = CreateStarted();
    EXPECT_EQ(StartCamera(handle, 0.0), 0);
    Trigger(4);
    Trigger(4);
    EXPECT_EQ(Snap(handle).key, 0);
    EXPECT_EQ(Snap(handle).key, 1);
    ReleaseCamera(handle);
}

TEST_F(SnapTest, EveryInstanceGetsEveryFrameInABufferOfItsOwn) {
    void* one = CreateStarted();
    void* other = CreateStarted();
    Trigger(4);
    Trigger(4);
    unsigned char* first = nullptr;
    unsigned char* second = nullptr;
    ASSERT_EQ(SnapShot(one, first), 0);
    ASSERT_EQ(SnapShot(other, second), 0);
    EXPECT_NE(first, second);
    EXPECT_EQ(Unpack(first, kPixels).second, Unpack(second, kPixels).second);
    ASSERT_EQ(CloseCamera(one), 0);
    EXPECT_EQ(Snap(other).key, 1) << "closing one instance leaves the other alone";
    ReleaseCamera(one);
    ReleaseCamera(other);
}

TEST_F(SnapTest, BufferHoldsTheWholeFrameAndStaysAsItIsUntilTheNextSnap) {
    void* handle = CreateStarted();
    Trigger(4);
    unsigned char* image = nullptr;
    ASSERT_EQ(SnapShot(handle, image), 0);
    const std::vector<unsigned char> copy(image, image + 2 * kPixels);
    Trigger(4);
    Trigger(4);
    EXPECT_EQ(std::vector<unsigned char>(image, image + 2 * kPixels), copy);
    ReleaseCamera(handle);
}

TEST_F(SnapTest, ResetDropsTheFramesThatWait) {
    void* handle = CreateStarted();
    Trigger(4);
    Trigger(4);
    EXPECT_TRUE(ResetCameraState(handle));
    ExpectNoFrame(handle);
    Trigger(4);
    EXPECT_EQ(Snap(handle).key, 2);
    ReleaseCamera(handle);
}

TEST_F(SnapTest, FramesBeyondTheBuffersAreLostAndCounted) {
    virtual_head::HeadDescription description = Small();
    description.cameraBuffers = 2;
    m_head = Request(description);
    void* handle = CreateStarted();
    for (int i = 0; i < 5; ++i) {
        Trigger(4);
    }
    EXPECT_EQ(Snap(handle).key, 0);
    EXPECT_EQ(Snap(handle).key, 1);
    Trigger(4);
    EXPECT_EQ(Snap(handle).key, 5);
    EXPECT_EQ(m_head->Clock().Lost(), 3U);
    ReleaseCamera(handle);
    EXPECT_EQ(m_head->Clock().Lost(), 3U);
}

TEST_F(SnapTest, ReopenedCameraDeliversAgainAndNothingFromBefore) {
    void* handle = CreateStarted();
    Trigger(4);
    ASSERT_EQ(CloseCamera(handle), 0);
    ASSERT_EQ(OpenCamera(handle, "KV00A1001", kWidth, kHeight), 0);
    ASSERT_EQ(StartCamera(handle, 0.0), 0);
    Trigger(4);
    EXPECT_EQ(Snap(handle).key, 1);
    ReleaseCamera(handle);
}

TEST_F(SnapTest, CloseAndReopenBesideSnapsIsSafe) {
    void* handle = CreateStarted();
    Trigger(6);
    Beside(handle, [handle] {
        for (int round = 0; round < 100; ++round) {
            EXPECT_EQ(CloseCamera(handle), 0);
            EXPECT_EQ(OpenCamera(handle, 0, 0, 0), 0);
            EXPECT_EQ(StartCamera(handle, 0.0), 0);
        }
    });
    ReleaseCamera(handle);
}

TEST_F(SnapTest, ReleaseBesideSnapsIsSafe) {
    Trigger(6);
    for (int round = 0; round < 20; ++round) {
        void* const handle = CreateStarted();
        Beside(handle, [handle] {
            void* released = handle;
            EXPECT_EQ(ReleaseCamera(released), 0);
        });
    }
}

TEST_F(SnapTest, ClosingEndsASnapThatWaits) {
    // A snap that starts only after the closing takes its whole limit, and a busy machine can delay
    // any other; it is enough that one of many ends before the limit, which closing alone can do.
    bool endedEarly = false;
    void* handle = Create();
    for (int round = 0; round < 200 && !endedEarly; ++round) {
        ASSERT_EQ(OpenCamera(handle, 0, 0, 0), 0);
        ASSERT_EQ(StartCamera(handle, 0.0), 0);
        os::Event started;
        std::thread grab([&] {
            unsigned char* image = nullptr;
            const auto start = std::chrono::steady_clock::now();
            started.Set();
            EXPECT_NE(SnapShot(handle, image), 0);
            endedEarly = std::chrono::steady_clock::now() - start < 100ms;
        });
        started.Wait();
        os::SleepFor(10ms);
        EXPECT_EQ(CloseCamera(handle), 0);
        grab.join();
    }
    EXPECT_TRUE(endedEarly);
    ReleaseCamera(handle);
}

TEST_F(SnapTest, WithdrawingTheHeadBesideSnapsIsSafe) {
    Trigger(6);
    void* handle = CreateStarted();
    Beside(handle, [] { virtual_head::WithdrawVirtualHead(); });
    ReleaseCamera(handle);
}

TEST_F(SnapTest, ReleaseWhileASnapHangsDoesNotWaitForIt) {
    void* handle = CreateStarted();
    void* const copy = handle;
    ASSERT_TRUE(m_head->GetFaults().Hang("SnapShot"));
    std::thread grab([copy] {
        unsigned char* image = nullptr;
        EXPECT_NE(SnapShot(copy, image), 0);
        EXPECT_EQ(image, nullptr);
    });
    ASSERT_TRUE(m_head->GetFaults().WaitForHang("SnapShot", 60s));
    EXPECT_EQ(ReleaseCamera(handle), 0);
    m_head->GetFaults().ReleaseHangs();
    grab.join();
}

TEST_F(SnapTest, SnapsOfTwoThreadsOnOneHandleShareTheFrames) {
    void* const handle = CreateStarted();
    constexpr int kFrames = 40;
    for (int i = 0; i < kFrames; ++i) {
        Trigger(4);
    }
    std::atomic<int> frames = 0;
    const auto snap = [&] {
        for (unsigned char* image = nullptr; SnapShot(handle, image) == 0;) {
            ++frames;
        }
    };
    std::thread other(snap);
    snap();
    other.join();
    EXPECT_EQ(frames, kFrames);
    void* released = handle;
    ReleaseCamera(released);
}

}  // namespace
}  // namespace Korvex3Sync::tests
