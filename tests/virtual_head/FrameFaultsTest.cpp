#include "virtual_head/faults/FrameFaults.h"

#include <gmock/gmock.h>

#include "virtual_head/TriggerClock.h"
#include "virtual_head/base/Journal.h"
#include "virtual_head/faults/Faults.h"

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto kFaultWait = 60000ms;
constexpr int kOff = 5;
constexpr int kSingle = 4;  // one colour exposure for each writing of the mode, at once
constexpr int kMono = 1;
constexpr int kColor = 6;

class FrameFaultsTest : public testing::Test {
protected:
    FrameFaultsTest() { m_clock.Attach(m_queue); }

    void Order(FaultKind kind, int times = 1, int byTriggers = 1) {
        FaultOrder order;
        order.kind = kind;
        order.times = times;
        order.byTriggers = byTriggers;
        ASSERT_TRUE(m_faults.Order(order));
    }

    void Write(int mode) {
        BoardState board;
        board.triggerMode = mode;
        board.triggerPeriod = 1;
        m_clock.Apply(board, true);
    }
    void WriteSingle(int times) {
        for (int i = 0; i < times; ++i) {
            Write(kSingle);
        }
    }

    Exposure ExpectNext(std::uint64_t trigger, bool color) {
        const auto exposure = m_queue->Pop(std::chrono::steady_clock::now() + kFaultWait);
        if (!exposure) {
            ADD_FAILURE() << "nothing came";
            return {};
        }
        EXPECT_EQ(exposure->trigger, trigger);
        EXPECT_EQ(exposure->key, trigger % 256);
        EXPECT_EQ(exposure->color, color);
        return *exposure;
    }
    void ExpectNothingWaits() {
        EXPECT_FALSE(m_queue->Pop(std::chrono::steady_clock::now() + 0ms));
    }

    /// What was made went somewhere.
    void ExpectAccount() {
        const HeadCounts counts = m_clock.Counts();
        for (const FrameCounts& frames : {counts.mono, counts.color}) {
            EXPECT_EQ(frames.made + frames.repeated, frames.lost + frames.unattended +
                                                         frames.handed + frames.lostInBuffers +
                                                         frames.heldBack);
        }
        EXPECT_EQ(counts.triggers, m_clock.Triggers());
    }

    Journal m_journal;
    Faults m_faults{&m_journal};
    std::shared_ptr<ExposureQueue> m_queue = std::make_shared<ExposureQueue>(100000);
    TriggerClock m_clock{true, m_faults};
};

TEST_F(FrameFaultsTest, LostMonoFramesLeaveTheirColourFrames) {
    Order(FaultKind::LoseMono, 2);
    Write(kColor);
    ExpectNext(0, true);
    ExpectNext(1, true);
    ExpectNext(2, false);
    Write(kOff);
    EXPECT_EQ(m_clock.Counts().mono.lost, 2U);
    EXPECT_EQ(m_clock.Counts().color.lost, 0U);
    ExpectAccount();
}

TEST_F(FrameFaultsTest, LostColourFramesLeaveTheirMonoFrames) {
    Order(FaultKind::LoseColor, 2);
    Write(kColor);
    ExpectNext(0, false);
    ExpectNext(1, false);
    ExpectNext(2, false);
    ExpectNext(2, true);
    Write(kOff);
    EXPECT_EQ(m_clock.Counts().color.lost, 2U);
    ExpectAccount();
}

TEST_F(FrameFaultsTest, LostTriggersLeaveNothing) {
    Order(FaultKind::LoseBoth, 3);
    Write(kColor);
    ExpectNext(3, false);
    Write(kOff);
    EXPECT_EQ(m_clock.Counts().mono.lost, 3U);
    EXPECT_EQ(m_clock.Counts().color.lost, 3U);
    ExpectAccount();
}

TEST_F(FrameFaultsTest, AFaultOfColourWaitsForATriggerWithColour) {
    Order(FaultKind::LoseColor);
    Write(kMono);
    ExpectNext(0, false);
    ExpectNext(1, false);
    Write(kOff);
    EXPECT_THAT(m_faults.Unused(), ElementsAre("lose-color: 1 left"));
    WriteSingle(1);
    EXPECT_THAT(m_faults.Unused(), IsEmpty());
}

TEST_F(FrameFaultsTest, AFaultOfFramesWaitsForACamera) {
    m_clock.Detach(m_queue);
    Order(FaultKind::LoseColor);
    WriteSingle(2);
    EXPECT_THAT(m_faults.Unused(), ElementsAre("lose-color: 1 left"));
    EXPECT_EQ(m_clock.Counts().color.unattended, 2U);
    m_queue = std::make_shared<ExposureQueue>(10);
    m_clock.Attach(m_queue);
    WriteSingle(2);
    ExpectNext(3, true);
    EXPECT_THAT(m_faults.Unused(), IsEmpty());
    ExpectAccount();
}

TEST_F(FrameFaultsTest, RepeatedFramesComeTwiceInARow) {
    Order(FaultKind::RepeatMono);
    Order(FaultKind::RepeatColor);
    Write(kColor);
    ExpectNext(0, false);
    ExpectNext(0, false);
    ExpectNext(0, true);
    ExpectNext(0, true);
    ExpectNext(1, false);
    Write(kOff);
    EXPECT_EQ(m_clock.Counts().mono.repeated, 1U);
    EXPECT_EQ(m_clock.Counts().color.repeated, 1U);
    ExpectAccount();
}

TEST_F(FrameFaultsTest, TornAndMisSizedFramesAreMarkedForTheCamera) {
    Order(FaultKind::TearMono);
    Order(FaultKind::MisSizeColor);
    Write(kColor);
    EXPECT_TRUE(ExpectNext(0, false).torn);
    const Exposure color = ExpectNext(0, true);
    EXPECT_FALSE(color.torn);
    EXPECT_TRUE(color.misSized);
    EXPECT_FALSE(ExpectNext(1, false).torn);
    EXPECT_FALSE(ExpectNext(1, true).misSized);
    Write(kOff);
    EXPECT_EQ(m_clock.Counts().mono.torn, 1U);
    EXPECT_EQ(m_clock.Counts().color.misSized, 1U);
    ExpectAccount();
}

TEST_F(FrameFaultsTest, AFrameMeetsOneFaultAndTheNextFramesTheOthers) {
    for (const FaultKind kind : {FaultKind::RepeatColor, FaultKind::MisSizeColor,
                                 FaultKind::TearColor, FaultKind::LoseColor}) {
        Order(kind);
    }
    WriteSingle(5);
    EXPECT_TRUE(ExpectNext(1, true).torn);
    EXPECT_TRUE(ExpectNext(2, true).misSized);
    ExpectNext(3, true);
    ExpectNext(3, true);
    ExpectNext(4, true);
    EXPECT_THAT(m_faults.Unused(), IsEmpty());
}

TEST_F(FrameFaultsTest, DelayedFramesComeLateAndInOrder) {
    Order(FaultKind::Delay, 1, 2);
    WriteSingle(2);
    ExpectNothingWaits();
    WriteSingle(1);
    ExpectNext(0, true);
    ExpectNext(1, true);
    ExpectNext(2, true);
    WriteSingle(1);
    ExpectNext(3, true);
    EXPECT_EQ(m_clock.Counts().delayed, 1U);
    ExpectAccount();
}

TEST_F(FrameFaultsTest, ADelayIsForATriggerThatGivesAFrame) {
    Order(FaultKind::LoseColor);
    Order(FaultKind::Delay);
    WriteSingle(1);
    EXPECT_EQ(m_clock.Counts().delayed, 0U);
    WriteSingle(1);
    EXPECT_EQ(m_clock.Counts().delayed, 1U);
    ExpectNothingWaits();
    WriteSingle(1);
    ExpectNext(1, true);
    ExpectNext(2, true);
    ExpectAccount();
}

TEST_F(FrameFaultsTest, DelayedFramesComeAtTheLatestWhenTheTriggerIsSwitchedOff) {
    Order(FaultKind::Delay, 1, 100);
    WriteSingle(2);
    ExpectNothingWaits();
    EXPECT_EQ(m_clock.Counts().color.heldBack, 2U);
    ExpectAccount();
    Write(kOff);
    EXPECT_EQ(m_clock.Counts().color.heldBack, 0U);
    ExpectNext(0, true);
    ExpectNext(1, true);
    ExpectNothingWaits();
    ExpectAccount();
}

TEST_F(FrameFaultsTest, SkippedKeysCountAsTriggersThatNoCameraSaw) {
    Order(FaultKind::SkipKeys, 5);
    WriteSingle(2);
    ExpectNext(5, true);
    ExpectNext(6, true);
    EXPECT_EQ(m_clock.Triggers(), 7U);
    EXPECT_EQ(m_clock.Counts().keysSkipped, 5U);
    EXPECT_EQ(m_clock.Counts().color.made, 2U);
    ExpectAccount();
}

TEST_F(FrameFaultsTest, AStoppedCameraGivesNothingUntilItIsStarted) {
    Order(FaultKind::CameraStop);
    EXPECT_THAT(m_faults.Unused(), ElementsAre("camera-stop: no trigger met it"));
    WriteSingle(300);
    ExpectNothingWaits();
    EXPECT_THAT(m_faults.Unused(), IsEmpty());
    m_faults.Frames().CameraStarted();
    WriteSingle(1);
    ExpectNext(300, true);
    EXPECT_EQ(m_clock.Counts().color.lost, 300U);
    ExpectAccount();
}

TEST_F(FrameFaultsTest, EveryInstanceSeesTheSameAndTheFirstIsCounted) {
    const auto small = std::make_shared<ExposureQueue>(2);
    m_clock.Attach(small);
    Order(FaultKind::LoseColor);
    WriteSingle(5);
    for (std::uint64_t trigger = 1; trigger < 5; ++trigger) {
        ExpectNext(trigger, true);
    }
    EXPECT_EQ(small->Pop(std::chrono::steady_clock::now() + 0ms).value().trigger, 1U);
    FrameCounts counts = m_clock.Counts().color;
    EXPECT_EQ(counts.handed, 4U);
    EXPECT_EQ(counts.fetched, 4U) << "what the other instance fetched is not counted";
    EXPECT_EQ(counts.lostInBuffers, 0U);
    m_clock.Detach(m_queue);
    WriteSingle(3);
    counts = m_clock.Counts().color;
    EXPECT_EQ(counts.handed, 5U);
    EXPECT_EQ(counts.lostInBuffers, 2U) << "the other one is the first now";
    ExpectAccount();
}

TEST_F(FrameFaultsTest, WhatWaitsIsCountedAsDroppedWhenItGoes) {
    WriteSingle(3);
    ExpectNext(0, true);
    m_queue->Clear();
    WriteSingle(2);
    m_clock.Detach(m_queue);
    const FrameCounts counts = m_clock.Counts().color;
    EXPECT_EQ(counts.handed, 5U);
    EXPECT_EQ(counts.fetched, 1U);
    EXPECT_EQ(counts.dropped, 4U);
}

TEST_F(FrameFaultsTest, TheJournalSaysWhichTriggerMetWhat) {
    Order(FaultKind::SkipKeys, 255);
    Order(FaultKind::TearColor);
    WriteSingle(1);
    Order(FaultKind::LoseBoth);
    WriteSingle(1);
    EXPECT_THAT(m_journal.Texts(), ElementsAre("fault(skip-keys, trigger 255, key 255) = met",
                                               "fault(tear-color, trigger 255, key 255) = met",
                                               "fault(lose-both, trigger 256, key 0) = met"));
}

}  // namespace
}  // namespace Korvex3Sync::tests
