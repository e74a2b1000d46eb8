#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>

#include "board/EveryCall.h"
#include "board/OpenBoard.h"
#include "platform/os/TimeScale.h"
#include "support/RequestedHead.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using namespace board;
using namespace std::chrono_literals;
using namespace zr3DHandiDLPdev;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using virtual_head::FaultKind;
using virtual_head::FaultOrder;

constexpr int kTriggerOff = 5;

FaultOrder Of(FaultKind kind) {
    FaultOrder order;
    order.kind = kind;
    return order;
}

void ExpectOpenFails() {
    void* handle = nullptr;
    EXPECT_FALSE(zr3DInitHidDev(handle, "3267", "5752", ""));
    EXPECT_EQ(handle, nullptr);
}

TEST(VanishedBoard, FailsInEveryCallOfEveryHandleAndOpensNoMore) {
    const RequestedHead head;
    OpenedBoard one;
    OpenedBoard other;
    ASSERT_TRUE(head->GetFaults().Order(Of(FaultKind::BoardVanish)));
    head->GetJournal().Clear();
    for (const BoardCall& each : EveryCall()) {
        EXPECT_FALSE(each.call(one.handle)) << each.function;
        EXPECT_FALSE(each.call(other.handle)) << each.function;
        EXPECT_THAT(head->GetJournal().Texts(),
                    Contains("fault(board-vanish, " + std::string(each.function) + ") = met"));
    }
    ExpectOpenFails();
    std::string version = "untouched";
    EXPECT_FALSE(zr3DQueryFirmwareVersionFast("", version));
    EXPECT_EQ(version, "untouched");
    EXPECT_TRUE(zr3DExitHidDev(one.handle)) << "closing works always";
}

TEST(VanishedBoard, StopsItsTrigger) {
    const RequestedHead head;
    const OpenedBoard board;
    ASSERT_TRUE(zr3DSetVideoTriggerPeriod(board.handle, 1));
    ASSERT_TRUE(zr3DSetVideoTrigleMode(board.handle, MASK_TRIGGER_MODE{1}));
    ASSERT_TRUE(head->GetFaults().Order(Of(FaultKind::BoardVanish)));
    const auto triggers = head->Clock().Triggers();
    EXPECT_FALSE(zr3DSetVideoTrigleMode(board.handle, MASK_TRIGGER_MODE{4}));
    EXPECT_EQ(head->Clock().Triggers(), triggers);
    EXPECT_EQ(head->Board().State().triggerMode, kTriggerOff);
}

TEST(VanishedBoard, ComesBackAsItWasSwitchedOnAndToNewHandlesOnly) {
    const RequestedHead head;
    const OpenedBoard old;
    const std::string text = "bench 7";
    ASSERT_TRUE(zr3DWriteUserInfomation(old.handle, 3, text.c_str(), 7));
    ASSERT_TRUE(zr3DSetProjectorBrightness(old.handle, 77));
    ASSERT_TRUE(zr3DEnableHeartbeat(old.handle, true));
    ASSERT_TRUE(zr3DSetVideoTrigleMode(old.handle, MASK_TRIGGER_MODE{1}));
    ASSERT_TRUE(head->GetFaults().Order(Of(FaultKind::BoardVanish)));
    ASSERT_TRUE(head->GetFaults().Order(Of(FaultKind::BoardReturn)));
    EXPECT_FALSE(zr3DProject(old.handle, PROJECTTYPE{2})) << "opened on the one before";

    const OpenedBoard fresh;
    int brightness = 0;
    EXPECT_TRUE(zr3DQueryProjectorBrightness(fresh.handle, brightness));
    EXPECT_EQ(brightness, virtual_head::BoardState{}.projectorBrightness);
    EXPECT_FALSE(head->Board().State().heartbeat);
    EXPECT_EQ(head->Board().State().triggerMode, kTriggerOff);
    std::array<char, 257> page{};
    char* buffer = page.data();
    EXPECT_TRUE(zr3DReadUserInfomation(fresh.handle, 3, buffer));
    EXPECT_EQ(std::string(buffer), text);
    const auto triggers = head->Clock().Triggers();
    EXPECT_TRUE(zr3DSetVideoTrigleMode(fresh.handle, MASK_TRIGGER_MODE{4}));
    EXPECT_EQ(head->Clock().Triggers(), triggers + 1) << "its trigger has power again";
    EXPECT_FALSE(zr3DProject(old.handle, PROJECTTYPE{2})) << "for good";
}

TEST(VanishedBoard, TakesACommandInProgressWithIt) {
    const RequestedHead head;
    const OpenedBoard board;
    ASSERT_TRUE(head->GetFaults().Hang("zr3DSetProjectorBrightness"));
    EXPECT_FALSE(zr3DSetProjectorBrightness(board.handle, 77)) << "it hangs in the board";
    ASSERT_TRUE(head->GetFaults().Order(Of(FaultKind::BoardVanish)));
    ASSERT_TRUE(head->GetFaults().Order(Of(FaultKind::BoardReturn)));
    head->GetFaults().ReleaseHangs();
    EXPECT_FALSE(zr3DProject(board.handle, PROJECTTYPE{2}));
    const OpenedBoard fresh;
    EXPECT_TRUE(zr3DProject(fresh.handle, PROJECTTYPE{2}));
    EXPECT_EQ(head->Board().State().projectorBrightness, 10);
}

TEST(MuteBoard, OpensAndAnswersNothingUntilItDoes) {
    const os::ScopedTimeScale fast{0.1};
    const RequestedHead head;
    const OpenedBoard board;
    ASSERT_TRUE(head->GetFaults().Order(Of(FaultKind::BoardMute)));
    EXPECT_FALSE(zr3DSetProjectorBrightness(board.handle, 77));
    const OpenedBoard another;
    std::string version = "untouched";
    EXPECT_FALSE(zr3DQueryFirmwareVersionFast("", version));
    EXPECT_EQ(version, "untouched");
    EXPECT_THAT(head->GetJournal().Texts({"fault"}),
                ElementsAre("fault(board-mute, zr3DSetProjectorBrightness) = met",
                            "fault(board-mute, zr3DQueryFirmwareVersionFast) = met"));
    ASSERT_TRUE(head->GetFaults().Order(Of(FaultKind::BoardAnswer)));
    EXPECT_TRUE(zr3DProject(board.handle, PROJECTTYPE{2}));
    EXPECT_TRUE(zr3DProject(another.handle, PROJECTTYPE{2}));
    EXPECT_EQ(head->Board().State().projectorBrightness, 10) << "nothing was taken either";
}

TEST(MuteBoard, AnswersFromTheOpenBehindTheOrderedOnes) {
    const os::ScopedTimeScale fast{0.1};
    const RequestedHead head;
    FaultOrder mute = Of(FaultKind::BoardMute);
    mute.opens = 1;
    ASSERT_TRUE(head->GetFaults().Order(mute));
    {
        const OpenedBoard board;
        EXPECT_FALSE(zr3DProject(board.handle, PROJECTTYPE{2}));
    }
    EXPECT_THAT(head->GetFaults().Unused(), IsEmpty());
    const OpenedBoard board;
    EXPECT_TRUE(zr3DProject(board.handle, PROJECTTYPE{2}));
}

TEST(MuteBoard, GoesOnTriggering) {
    const os::ScopedTimeScale fast{0.1};
    const RequestedHead head;
    const OpenedBoard board;
    ASSERT_TRUE(zr3DSetVideoTriggerPeriod(board.handle, 1));
    ASSERT_TRUE(zr3DSetVideoTrigleMode(board.handle, MASK_TRIGGER_MODE{1}));
    ASSERT_TRUE(head->GetFaults().Order(Of(FaultKind::BoardMute)));
    const auto triggers = head->Clock().Triggers();
    EXPECT_FALSE(zr3DSetVideoTrigleMode(board.handle, MASK_TRIGGER_MODE{5}));
    EXPECT_TRUE(support::WaitUntil([&] { return head->Clock().Triggers() > triggers; }));
}

TEST(LateBoard, DelaysItsAnswersAndDoesAtOnceWhatItIsTold) {
    const RequestedHead head;
    const OpenedBoard board;
    FaultOrder late = Of(FaultKind::BoardLate);
    late.extra = 60ms;
    late.times = 2;
    ASSERT_TRUE(head->GetFaults().Order(late));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(zr3DSetProjectorBrightness(board.handle, 77));
    EXPECT_TRUE(zr3DProject(board.handle, PROJECTTYPE{2}));
    EXPECT_GE(std::chrono::steady_clock::now() - start, 120ms);
    EXPECT_THAT(head->GetJournal().Texts({"fault"}),
                ElementsAre("fault(board-late, zr3DSetProjectorBrightness) = met",
                            "fault(board-late, zr3DProject) = met"));
}

TEST(LateBoard, ThatAnswersBehindTheLimitFailsTheCallAndNotTheNext) {
    const os::ScopedTimeScale fast{0.1};
    const RequestedHead head;
    const OpenedBoard board;
    FaultOrder late = Of(FaultKind::BoardLate);
    late.extra = 550ms;
    ASSERT_TRUE(head->GetFaults().Order(late));
    EXPECT_FALSE(zr3DSetProjectorBrightness(board.handle, 77));
    EXPECT_EQ(head->Board().State().projectorBrightness, 77) << "it was done in time";
    int brightness = 0;
    EXPECT_TRUE(zr3DQueryProjectorBrightness(board.handle, brightness))
        << "the late answer is not taken for this one's";
    EXPECT_EQ(brightness, 77);
}

TEST(SlowCall, BeyondTheLimitFailsAndNotTheNext) {
    const os::ScopedTimeScale fast{0.2};
    const RequestedHead head;
    const OpenedBoard board;
    ASSERT_TRUE(head->GetFaults().Slow("zr3DProject", 2s, 1));
    EXPECT_FALSE(zr3DProject(board.handle, PROJECTTYPE{2}));
    // The slow call still occupies the board.
    ASSERT_TRUE(
        support::WaitUntil([&] { return head->GetJournal().Texts({"zr3DProject"}).size() == 1; }));
    EXPECT_TRUE(zr3DProject(board.handle, PROJECTTYPE{1}));
}

TEST(SlowCall, HoldsUpNoClosing) {
    const os::ScopedTimeScale fast{0.1};
    const RequestedHead head;
    OpenedBoard board;
    // Ten minutes each, longer than a test may take.
    ASSERT_TRUE(head->GetFaults().Slow("zr3DProject", 100min, 1));
    ASSERT_TRUE(head->GetFaults().Slow("zr3DExitHidDev", 100min, 1));
    EXPECT_FALSE(zr3DProject(board.handle, PROJECTTYPE{2}));
    EXPECT_FALSE(zr3DExitHidDev(board.handle)) << "the reply limit passed";
    EXPECT_EQ(board.handle, nullptr);
    EXPECT_THAT(head->GetJournal().Texts(), Contains("zr3DProject(2) = true"));
}

TEST(LateBoard, HoldsUpNoClosing) {
    const os::ScopedTimeScale fast{0.1};
    const RequestedHead head;
    OpenedBoard board;
    FaultOrder late = Of(FaultKind::BoardLate);
    late.extra = 10min;  // longer than a test may take
    ASSERT_TRUE(head->GetFaults().Order(late));
    EXPECT_FALSE(zr3DProject(board.handle, PROJECTTYPE{2}));
    EXPECT_TRUE(zr3DExitHidDev(board.handle));
}

}  // namespace
}  // namespace Korvex3Sync::tests
