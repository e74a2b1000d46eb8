#include "sync/frames/FramePath.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "platform/os/Event.h"
#include "support/Accounted.h"
#include "support/Golden.h"
#include "support/PackedFrames.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

constexpr int kWidth = 8;
constexpr int kHeight = 4;
constexpr std::size_t kPixels = 32;

/// Board modes of the trigger.
constexpr int kLaserLines = 2;
constexpr int kLaserLinesColor = 3;
constexpr int kOff = 5;

/// A frame path that is given frames without cameras. Its sets are noted as text: the last pixel of
/// each image, then the size.
class FramePathTest : public testing::Test {
protected:
    FramePathTest() {
        m_path.SetRoutes({{0, true, kWidth, kHeight}});
        m_path.SetScanCallBackFunction(&FramePathTest::Receive, &m_sets);
    }
    void Frame(std::vector<unsigned char> bytes, int cameraId = 0, int width = kWidth) {
        FramePath::OnFrame(&m_path, cameraId, bytes.data(), width, kHeight, 1);
    }
    void Mono(unsigned char key, int cameraId = 0, int width = kWidth) {
        Frame(support::MonoFrame(kPixels, 10, 11, key), cameraId, width);
    }
    void Color(unsigned char key) { Frame(support::ColorFrame(kPixels, 30, key)); }
    void WriteMode(int mode) {
        m_path.Starts().Writing(mode);
        m_path.Starts().Written(true);
    }
    ScanStatistics Statistics() {
        ScanStatistics statistics;
        m_path.GetScanStatistics(statistics);
        return statistics;
    }

    using Sets = std::vector<std::string>;
    Sets m_sets;
    FramePath m_path{nullptr};

private:
    static void Receive(const void* const& context, std::vector<unsigned char*>& images,
                        const int& width, const int& height, std::vector<int>&) {
        std::string set;
        for (const unsigned char* image : images) {
            set += std::to_string(image[kPixels - 1]) + " ";
        }
        set += std::to_string(width) + "x" + std::to_string(height);
        static_cast<Sets*>(const_cast<void*>(context))->push_back(set);
    }
};

TEST_F(FramePathTest, AMonoFrameAndItsColourFrameReachTheCallback) {
    WriteMode(kLaserLinesColor);
    Mono(0);
    EXPECT_EQ(Statistics().setsPending, 1u);
    Color(0);
    EXPECT_EQ(m_sets, Sets{"10 11 30 8x4"});
    EXPECT_EQ(Statistics().setsWithColor, 1u);
    EXPECT_EQ(Statistics().setsPending, 0u);
}

TEST_F(FramePathTest, TheCallbackIsToldTheWidthOfTheFrameAndTheHeightOfItsCamera) {
    Mono(0);
    Mono(1, 0, 99);
    EXPECT_EQ(m_sets, Sets{"10 11 99x4"});
}

TEST_F(FramePathTest, FramesOfAnUnknownOrUnpackedCameraAreCountedAndLeftAlone) {
    m_path.SetRoutes({{0, false, kWidth, kHeight}});
    Mono(0);
    Mono(1, 1);
    Mono(2, -1);
    EXPECT_EQ(Statistics().unroutedFrames, 3u);
    EXPECT_EQ(Statistics().setsPending, 0u);
}

TEST_F(FramePathTest, FramesBeforeTheRoutesAreSetAreUnrouted) {
    FramePath path(nullptr);
    auto frame = support::MonoFrame(kPixels, 10, 11, 0);
    FramePath::OnFrame(&path, 0, frame.data(), kWidth, kHeight, 1);
    ScanStatistics statistics;
    path.GetScanStatistics(statistics);
    EXPECT_EQ(statistics.unroutedFrames, 1u);
}

TEST_F(FramePathTest, FramesOfACameraWithoutASizeAreUndecodable) {
    m_path.SetRoutes({{0, true, 0, 0}});
    Mono(0);
    EXPECT_EQ(Statistics().undecodableFrames, 1u);
    EXPECT_EQ(Statistics().setsPending, 0u);
}

TEST_F(FramePathTest, ACallWithoutAConnectionOrWithoutAFrameDoesNothing) {
    auto frame = support::MonoFrame(kPixels, 10, 11, 0);
    FramePath::OnFrame(nullptr, 0, frame.data(), kWidth, kHeight, 1);
    FramePath::OnFrame(&m_path, 0, nullptr, kWidth, kHeight, 1);
    EXPECT_EQ(Statistics().unroutedFrames, 0u);
    EXPECT_EQ(Statistics().undecodableFrames, 0u);
    EXPECT_EQ(Statistics().setsPending, 0u);
}

TEST_F(FramePathTest, EachCameraHasItsOwnKeys) {
    m_path.SetRoutes({{0, true, kWidth, kHeight},
                      {0, true, kWidth, kHeight},
                      {1, true, kWidth, kHeight},
                      {1, true, kWidth, kHeight}});
    Mono(1, 0);
    Mono(7, 2);
    Mono(2, 0);
    Mono(8, 2);
    Mono(3, 1);  // another id of the first camera
    EXPECT_EQ(Statistics().missingKeys, 0u);
    Mono(6, 0);
    EXPECT_EQ(Statistics().missingKeys, 2u);
}

TEST_F(FramePathTest, ASnapshotTakesAColourFrameThatItsSetDoesNotMiss) {
    WriteMode(kLaserLinesColor);
    m_path.SnapshotCatch().Begin();
    m_path.SnapshotCatch().Arm();
    Mono(0);
    Color(0);
    Mono(1);
    EXPECT_EQ(m_sets, Sets{"10 11 8x4"});
    EXPECT_EQ(Statistics().colorForSnapshot, 1u);
    EXPECT_EQ(Statistics().monoWithoutColor, 0u);
    const auto images = m_path.SnapshotCatch().TakeAll();
    ASSERT_TRUE(images[0]);
    EXPECT_EQ(images[0].Pixels()[kPixels - 1], 30);
}

TEST_F(FramePathTest, ASnapshotTakesThreeColourFramesAndTheFourthIsPaired) {
    m_path.SnapshotCatch().Begin();
    m_path.SnapshotCatch().Arm();
    support::Output output;
    Mono(0);
    for (int i = 0; i < 4; ++i) {
        Color(0);
    }
    EXPECT_TRUE(support::MatchesGolden("OnFrame", "a snapshot takes three frames", output.End()));
    EXPECT_EQ(m_sets, Sets{"10 11 30 8x4"});
    EXPECT_EQ(Statistics().colorForSnapshot, 3u);
    m_path.SnapshotCatch().ReleaseAll();
}

TEST_F(FramePathTest, AColourFrameIsExpectedOnlyWhereTheModeGivesOne) {
    WriteMode(kLaserLines);
    Mono(0);
    Mono(1);
    EXPECT_EQ(Statistics().monoWithoutColor, 0u);
    WriteMode(kOff);
    WriteMode(kLaserLinesColor);
    Mono(0);
    Mono(1);
    EXPECT_EQ(m_sets.size(), 3u);
    EXPECT_EQ(Statistics().monoWithoutColor, 1u);
}

TEST_F(FramePathTest, FramesThatWaitedSinceAModeWithoutColourMissNone) {
    WriteMode(kLaserLines);
    Mono(0);
    WriteMode(kLaserLinesColor);  // while the trigger runs
    Mono(1);
    Mono(2);
    Mono(3);
    Color(3);
    Mono(4);
    EXPECT_EQ(Statistics().monoWithoutColor, 0u);
    Mono(5);
    EXPECT_EQ(Statistics().monoWithoutColor, 1u) << "the colour frame of key 4";
    WriteMode(kOff);
    WriteMode(kLaserLines);
    WriteMode(kOff);
    WriteMode(kLaserLinesColor);
    Mono(6);
    Mono(7);
    Mono(0);  // the first one of the latest start
    EXPECT_EQ(Statistics().monoWithoutColor, 2u) << "key 5, which came before the stop";
    Mono(1);
    EXPECT_EQ(Statistics().monoWithoutColor, 3u);
    EXPECT_EQ(Statistics().missingKeys, 0u);
}

TEST_F(FramePathTest, ALateFrameLeavesTheSumOfTheTriggersExact) {
    WriteMode(kLaserLines);
    for (const unsigned char key : {0, 1, 3, 2, 4}) {
        Mono(key);
    }
    EXPECT_EQ(support::AccountedTriggers(Statistics()), 5u);
    EXPECT_EQ(Statistics().missingKeys, 1u);
    EXPECT_EQ(Statistics().repeatedKeys, 1u);
}

TEST_F(FramePathTest, StatisticsCanBeReadWhileACallbackRuns) {
    struct Stuck {
        os::Event entered;
        os::Event leave;
    } stuck;
    const auto block = [](const void* const& context, std::vector<unsigned char*>&, const int&,
                          const int&, std::vector<int>&) {
        auto* const events = static_cast<Stuck*>(const_cast<void*>(context));
        events->entered.Set();
        events->leave.Wait();
    };
    m_path.SetScanCallBackFunction(block, &stuck);
    Mono(0);
    std::thread grab([this] { Color(0); });
    stuck.entered.Wait();
    EXPECT_EQ(Statistics().setsPending, 1u);
    stuck.leave.Set();
    grab.join();
    EXPECT_EQ(Statistics().setsDelivered, 1u);
}

/// Callbacks that had begun when another thread asked for the frame lock, and when it had it.
TEST_F(FramePathTest, ASetterWaitsForFewCallbacksAlthoughFramesComeBackToBack) {
    constexpr int kRounds = 50;
    static std::atomic<int> begun;
    begun = 0;
    const auto slow = [](const void* const&, std::vector<unsigned char*>&, const int&, const int&,
                         std::vector<int>&) {
        ++begun;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    };
    m_path.SetScanCallBackFunction(slow, nullptr);
    std::atomic<bool> end{false};
    std::thread grab([&] {
        for (unsigned char key = 0; !end; ++key) {
            Mono(key);
        }
    });
    EXPECT_TRUE(support::WaitUntil([] { return begun > 1; }));
    int waitedFor = 0;
    for (int round = 0; round < kRounds && waitedFor < 100 * kRounds; ++round) {
        const int before = begun;
        m_path.SetScanCallBackFunction(slow, nullptr);
        waitedFor += begun - before;
    }
    end = true;
    grab.join();
    EXPECT_LT(waitedFor, 5 * kRounds) << "one or two each, but for a machine that is busy";
}

}  // namespace
}  // namespace Korvex3Sync::tests
