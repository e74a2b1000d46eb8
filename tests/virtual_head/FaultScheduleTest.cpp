#include "virtual_head/faults/FaultSchedule.h"

#include <gmock/gmock.h>

#include "support/WaitUntil.h"
#include "virtual_head/TriggerClock.h"
#include "virtual_head/base/Journal.h"
#include "virtual_head/faults/Faults.h"

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;
using namespace std::chrono_literals;
using support::WaitUntil;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

TimedFault At(FaultKind kind, std::chrono::milliseconds time) {
    TimedFault fault;
    fault.order.kind = kind;
    fault.at = time;
    return fault;
}

TimedFault AtTrigger(FaultKind kind, std::uint64_t trigger) {
    TimedFault fault;
    fault.order.kind = kind;
    fault.atTrigger = trigger;
    return fault;
}

TimedFault Sometimes(FaultKind kind, double chance) {
    TimedFault fault;
    fault.order.kind = kind;
    fault.chance = chance;
    return fault;
}

/// A clock that gives single triggers, with faults that begin by themselves.
class Triggered {
public:
    explicit Triggered(const std::vector<TimedFault>& timed, std::uint64_t seed = 1) {
        m_clock.Attach(m_queue);
        m_faults.Start({}, timed, seed);
    }
    ~Triggered() { m_faults.End(); }

    /// Gives triggers; the numbers of those whose colour frame came.
    std::vector<std::uint64_t> Give(int triggers) {
        BoardState board;
        board.triggerMode = 4;
        std::vector<std::uint64_t> seen;
        for (int i = 0; i < triggers; ++i) {
            m_clock.Apply(board, true);
            while (const auto exposure = m_queue->Pop(std::chrono::steady_clock::now() + 0ms)) {
                seen.push_back(exposure->trigger);
            }
        }
        return seen;
    }

    Journal m_journal;
    Faults m_faults{&m_journal};
    std::shared_ptr<ExposureQueue> m_queue = std::make_shared<ExposureQueue>(10000);
    TriggerClock m_clock{true, m_faults};
};

TEST(FaultSchedule, AFaultBeginsWithItsTrigger) {
    Triggered head({AtTrigger(FaultKind::LoseColor, 3)});
    EXPECT_THAT(head.Give(3), ElementsAre(0, 1, 2));
    EXPECT_THAT(head.m_faults.Unused(),
                ElementsAre("lose-color, times 1, at_trigger 3: not reached"));
    EXPECT_THAT(head.Give(3), ElementsAre(4, 5));
    EXPECT_THAT(head.m_faults.Unused(), IsEmpty());
    EXPECT_THAT(
        head.m_journal.Texts(),
        ElementsAre("fault(seed 1) = begun", "fault(lose-color, times 1, at_trigger 3) = begun",
                    "fault(lose-color, trigger 3, key 3) = met"));
}

TEST(FaultSchedule, ASkippedNumberBeginsItsFaultWithTheNextTrigger) {
    TimedFault skip = AtTrigger(FaultKind::SkipKeys, 1);
    skip.order.times = 10;
    Triggered head({AtTrigger(FaultKind::LoseColor, 5), skip});
    EXPECT_THAT(head.Give(4), ElementsAre(0, 11, 13)) << "12 is the first one behind 5";
}

TEST(FaultSchedule, AFaultAtATriggerIsForTheNumberSinceTheHeadExists) {
    Triggered head({AtTrigger(FaultKind::LoseColor, 3)});
    EXPECT_THAT(head.Give(2), ElementsAre(0, 1));
    head.m_clock.Apply(BoardState{}, true);
    EXPECT_THAT(head.Give(3), ElementsAre(0, 2)) << "the second start counts from 0 again";
}

TEST(FaultSchedule, EqualSeedsDrawEqualFaults) {
    const auto run = [](std::uint64_t seed) {
        Triggered head(
            {Sometimes(FaultKind::LoseColor, 0.2), Sometimes(FaultKind::RepeatColor, 0.1)}, seed);
        return head.Give(500);
    };
    const auto first = run(7);
    EXPECT_EQ(first, run(7));
    EXPECT_NE(first, run(8));
    EXPECT_LT(first.size(), 500U);
    EXPECT_GT(first.size(), 250U);
}

TEST(FaultSchedule, TriggersThatNoCameraAttendsAreDrawnForToo) {
    constexpr std::uint64_t kUnattended = 100;
    const std::vector<TimedFault> faults{Sometimes(FaultKind::LoseColor, 0.2)};
    std::vector<std::uint64_t> whole = Triggered(faults).Give(500);
    std::erase_if(whole, [](std::uint64_t trigger) { return trigger < kUnattended; });
    Triggered head(faults);
    head.m_clock.DetachAll();
    EXPECT_THAT(head.Give(kUnattended), IsEmpty());
    head.m_clock.Attach(head.m_queue);
    EXPECT_EQ(head.Give(500 - kUnattended), whole);
}

TEST(FaultSchedule, ChancesAreWhatTheySay) {
    EXPECT_THAT(Triggered({Sometimes(FaultKind::LoseColor, 1)}).Give(50), IsEmpty());
    TimedFault later = Sometimes(FaultKind::LoseColor, 1);
    later.atTrigger = 2;
    EXPECT_THAT(Triggered({later}).Give(50), ElementsAre(0, 1));
}

TEST(FaultSchedule, ADrawWithoutACameraDoesNothing) {
    Triggered head({Sometimes(FaultKind::LoseColor, 1)});
    head.m_clock.Detach(head.m_queue);
    head.Give(20);
    EXPECT_THAT(head.m_faults.Unused(), ElementsAre("lose-color, times 1, chance 1: never drawn"));
    head.m_queue = std::make_shared<ExposureQueue>(10);
    head.m_clock.Attach(head.m_queue);
    head.Give(1);
    EXPECT_THAT(head.m_faults.Unused(), IsEmpty());
}

TEST(FaultSchedule, AFaultBeginsAtItsTime) {
    Triggered head({At(FaultKind::BoardVanish, 1ms), At(FaultKind::CameraVanish, 24h)});
    EXPECT_TRUE(WaitUntil([&] { return !head.m_faults.Board().Plugged().Here(); }));
    EXPECT_TRUE(head.m_faults.Camera().Here());
    EXPECT_THAT(head.m_faults.Unused(), ElementsAre("board-vanish: no call met it",
                                                    "camera-vanish, at_ms 86400000: not reached"));
}

TEST(FaultSchedule, AFaultAtZeroIsThereFromTheBeginning) {
    for (int round = 0; round < 20; ++round) {
        Triggered head({At(FaultKind::CameraVanish, 24h), At(FaultKind::BoardVanish, 0ms)});
        ASSERT_FALSE(head.m_faults.Board().Plugged().Here());
        ASSERT_TRUE(head.m_faults.Camera().Here());
    }
}

TEST(FaultSchedule, WhatIsGoneForATimeComesBackByItself) {
    Triggered head({});
    FaultOrder vanish;
    vanish.kind = FaultKind::CameraVanish;
    vanish.lasting = 1ms;
    FaultOrder mute;
    mute.kind = FaultKind::BoardMute;
    mute.lasting = 1ms;
    for (std::uint64_t plug = 1; plug < 4; ++plug) {
        ASSERT_TRUE(head.m_faults.Order(vanish));
        ASSERT_TRUE(head.m_faults.Order(mute));
        EXPECT_TRUE(WaitUntil([&] { return head.m_faults.Camera().Here(); }));
        EXPECT_EQ(head.m_faults.Camera().Plug(), plug);
        EXPECT_TRUE(WaitUntil([&] { return !head.m_faults.Board().SaysNothing("zr3DProject"); }));
    }
}

TEST(FaultSchedule, AFaultThatCannotBeginIsNamed) {
    Triggered head({At(FaultKind::BoardReturn, 0ms)});
    EXPECT_THAT(head.m_journal.Texts(), Contains("fault(board-return, at_ms 0) = refused"));
    EXPECT_THAT(head.m_faults.Unused(), ElementsAre("board-return, at_ms 0: could not begin"));
}

TEST(FaultSchedule, ClearForgetsWhatHasNotBegun) {
    Triggered head({AtTrigger(FaultKind::LoseColor, 0), Sometimes(FaultKind::LoseColor, 1),
                    At(FaultKind::BoardVanish, 24h)});
    head.m_faults.Clear();
    EXPECT_THAT(head.m_faults.Unused(), IsEmpty());
    EXPECT_THAT(head.Give(2), ElementsAre(0, 1));
}

TEST(FaultSchedule, AFaultMayEndTheTriggerThatItComesWith) {
    Journal journal;
    Faults faults(&journal);
    TriggerClock clock(true, faults);
    const auto queue = std::make_shared<ExposureQueue>(1000);
    clock.Attach(queue);
    Faults::Hooks hooks;
    hooks.boardVanished = [&clock] { clock.SetPower(false); };
    faults.Start(hooks, {AtTrigger(FaultKind::BoardVanish, 10)}, 1);
    BoardState board;
    board.triggerMode = 1;
    board.triggerPeriod = 1;
    clock.Apply(board, true);
    EXPECT_TRUE(WaitUntil([&] { return !faults.Board().Plugged().Here(); }));
    for (std::uint64_t trigger = 0; trigger < 10; ++trigger) {
        EXPECT_EQ(queue->Pop(std::chrono::steady_clock::now() + 60000ms).value().trigger, trigger);
    }
    clock.Apply(board, true);
    EXPECT_FALSE(queue->Pop(std::chrono::steady_clock::now() + 10ms))
        << "without power nothing is triggered";
    EXPECT_EQ(clock.Triggers(), 10U);
    clock.SetPower(true);
    EXPECT_FALSE(queue->Pop(std::chrono::steady_clock::now() + 10ms))
        << "the trigger is off when the power comes back";
    faults.End();
    clock.End();
}

}  // namespace
}  // namespace Korvex3Sync::tests
