#include "virtual_head/faults/FaultOrder.h"

#include <gmock/gmock.h>

#include <set>

#include "virtual_head/faults/Faults.h"

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

FaultOrder Of(FaultKind kind, int times = 1) {
    FaultOrder order;
    order.kind = kind;
    order.times = times;
    return order;
}

FaultOrder Call(FaultKind kind, const std::string& call) {
    FaultOrder order = Of(kind);
    order.call = call;
    return order;
}

TEST(FaultOrder, EveryKindHasANameOfItsOwnThatNamesIt) {
    std::set<std::string> names;
    for (int kind = 0; kind <= static_cast<int>(FaultKind::SkipKeys); ++kind) {
        const std::string name = Name(static_cast<FaultKind>(kind));
        EXPECT_TRUE(names.insert(name).second) << name;
        EXPECT_EQ(FaultKindNamed(name), static_cast<FaultKind>(kind)) << name;
    }
}

TEST(FaultOrder, UnknownNamesNameNothing) {
    for (const char* name : {"", "lose", "lose-mono ", "Lose-mono", "lose_mono", "board"}) {
        EXPECT_FALSE(FaultKindNamed(name)) << name;
    }
}

TEST(FaultOrder, WhatCannotBeIsRefusedAndOrdersNothing) {
    Faults faults;
    FaultOrder misplacedCall = Of(FaultKind::LoseMono);
    misplacedCall.call = "SnapShot";
    FaultOrder misplacedTime = Of(FaultKind::LoseMono);
    misplacedTime.lasting = 5ms;
    FaultOrder negative = Of(FaultKind::BoardVanish);
    negative.lasting = -1ms;
    FaultOrder never = Of(FaultKind::Delay);
    never.byTriggers = 0;
    FaultOrder vanishTwice = Of(FaultKind::BoardVanish, 2);
    for (const FaultOrder& order :
         {Call(FaultKind::Fail, ""), Call(FaultKind::Fail, "Snap"), Of(FaultKind::LoseMono, 0),
          Of(FaultKind::TearColor, -1), Of(FaultKind::SkipKeys, 1'000'001), misplacedCall,
          misplacedTime, negative, never, vanishTwice, Of(FaultKind::BoardLate),
          Call(FaultKind::Slow, "SnapShot")}) {
        EXPECT_FALSE(faults.Order(order)) << Text(order);
    }
    EXPECT_THAT(faults.Unused(), IsEmpty());
    EXPECT_TRUE(faults.Board().Plugged().Here());
}

TEST(FaultOrder, ByCallDoesWhatTheFunctionsOfThatNameDo) {
    Faults faults;
    ASSERT_TRUE(faults.Order(Call(FaultKind::Fail, "SnapShot")));
    FaultOrder slow = Call(FaultKind::Slow, "zr3DProject");
    slow.extra = 1ms;
    ASSERT_TRUE(faults.Order(slow));
    FaultOrder hang = Call(FaultKind::Hang, "EnumAllHCD");
    hang.lasting = 1ms;
    ASSERT_TRUE(faults.Order(hang));
    EXPECT_THAT(faults.Unused(), ElementsAre("hang EnumAllHCD: 1 left", "fail SnapShot: 1 left",
                                             "slow zr3DProject: 1 left"));
    EXPECT_TRUE(faults.Meet("SnapShot"));
    EXPECT_FALSE(faults.Meet("zr3DProject"));
    EXPECT_TRUE(faults.Meet("EnumAllHCD")) << "a hang with a time ends by itself, and fails";
    EXPECT_THAT(faults.Unused(), IsEmpty());
}

TEST(FaultOrder, ADeviceVanishesOnceAndReturnsOnce) {
    Faults faults;
    EXPECT_FALSE(faults.Order(Of(FaultKind::BoardReturn)));
    EXPECT_FALSE(faults.Order(Of(FaultKind::CameraReturn)));
    EXPECT_FALSE(faults.Order(Of(FaultKind::BoardAnswer)));
    for (const auto& [vanish, back] :
         {std::pair{FaultKind::BoardVanish, FaultKind::BoardReturn},
          std::pair{FaultKind::CameraVanish, FaultKind::CameraReturn}}) {
        EXPECT_TRUE(faults.Order(Of(vanish)));
        EXPECT_FALSE(faults.Order(Of(vanish)));
        EXPECT_TRUE(faults.Order(Of(back)));
        EXPECT_FALSE(faults.Order(Of(back)));
    }
}

TEST(FaultOrder, UnusedNamesEveryFaultThatWasNotMetInFull) {
    Faults faults;
    FaultOrder mute = Of(FaultKind::BoardMute);
    mute.opens = 2;
    FaultOrder late = Of(FaultKind::BoardLate, 3);
    late.extra = 1ms;
    for (const FaultOrder& order :
         {Of(FaultKind::BoardVanish), mute, late, Of(FaultKind::CameraVanish),
          Of(FaultKind::CameraStop), Of(FaultKind::LoseMono, 2), Of(FaultKind::SkipKeys, 5)}) {
        EXPECT_TRUE(faults.Order(order)) << Text(order);
    }
    EXPECT_THAT(
        faults.Unused(),
        ElementsAre("camera-vanish: no call met it", "board-vanish: no call met it",
                    "board-mute: no call met it", "board-late: 3 left",
                    "camera-stop: no trigger met it", "lose-mono: 2 left", "skip-keys: 5 left"));
    EXPECT_FALSE(faults.ReachCamera("GetDeviceTotal"));
    EXPECT_FALSE(faults.Board().Open("zr3DInitHidDev"));
    EXPECT_TRUE(faults.Board().SaysNothing("zr3DProject"));
    EXPECT_THAT(faults.Unused(), ElementsAre("board-mute: 2 opens left", "board-late: 3 left",
                                             "camera-stop: no trigger met it", "lose-mono: 2 left",
                                             "skip-keys: 5 left"));
    faults.Clear();
    EXPECT_THAT(faults.Unused(), IsEmpty());
    EXPECT_FALSE(faults.Board().Plugged().Here()) << "what is gone stays gone";
    EXPECT_FALSE(faults.Board().SaysNothing("zr3DProject"));
}

TEST(FaultOrder, AVanishingThatNobodyNoticedIsNotForgottenByTheReturn) {
    Faults faults;
    ASSERT_TRUE(faults.Order(Of(FaultKind::BoardVanish)));
    ASSERT_TRUE(faults.Order(Of(FaultKind::BoardReturn)));
    EXPECT_THAT(faults.Unused(), ElementsAre("board-vanish: no call met it"));
    EXPECT_FALSE(faults.Board().Reach(0, "zr3DProject")) << "opened before";
    EXPECT_TRUE(faults.Board().Reach(1, "zr3DProject"));
    EXPECT_THAT(faults.Unused(), IsEmpty());
}

}  // namespace
}  // namespace Korvex3Sync::tests
