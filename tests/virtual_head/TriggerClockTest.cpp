#include "virtual_head/TriggerClock.h"

#include <gtest/gtest.h>

#include <thread>

#include "virtual_head/faults/Faults.h"

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;
using namespace std::chrono_literals;
using std::chrono::steady_clock;

constexpr auto kGenerous = 60000ms;
constexpr auto kShort = 30ms;  // to see that nothing comes
constexpr int kOff = 5;

class TriggerClockTest : public testing::Test {
protected:
    explicit TriggerClockTest(bool color = true) : m_clock(color, m_faults) {
        m_clock.Attach(m_queue);
    }

    void Write(int mode, int period = 1) {
        BoardState board;
        board.triggerMode = mode;
        board.triggerPeriod = period;
        m_clock.Apply(board, true);
    }

    /// Expects the next exposure to be this one.
    void ExpectNext(std::uint64_t trigger, bool color) {
        const auto exposure = m_queue->Pop(std::chrono::steady_clock::now() + kGenerous);
        ASSERT_TRUE(exposure);
        EXPECT_EQ(exposure->trigger, trigger);
        EXPECT_EQ(exposure->key, trigger % 256);
        EXPECT_EQ(exposure->color, color);
    }

    void ExpectNothing() { EXPECT_FALSE(m_queue->Pop(std::chrono::steady_clock::now() + kShort)); }

    std::shared_ptr<ExposureQueue> m_queue = std::make_shared<ExposureQueue>(100000);
    Faults m_faults;
    TriggerClock m_clock;
};

class MonoTriggerClockTest : public TriggerClockTest {
protected:
    MonoTriggerClockTest() : TriggerClockTest(false) {}
};

TEST_F(TriggerClockTest, LaserAndPatternModesGiveAMonoExposureEachTrigger) {
    for (const int mode : {1, 2}) {
        Write(mode);
        for (std::uint64_t trigger = 0; trigger < 5; ++trigger) {
            ExpectNext(trigger, false);
        }
        Write(kOff);
        m_queue->Clear();
    }
}

TEST_F(TriggerClockTest, ModesWithColorGiveMonoThenColorWithTheSameKey) {
    for (const int mode : {3, 6}) {
        Write(mode);
        for (std::uint64_t trigger = 0; trigger < 5; ++trigger) {
            ExpectNext(trigger, false);
            ExpectNext(trigger, true);
        }
        Write(kOff);
        m_queue->Clear();
    }
}

TEST_F(MonoTriggerClockTest, HeadWithoutColorGivesMonoExposuresOnly) {
    Write(6);
    ExpectNext(0, false);
    ExpectNext(1, false);
    Write(kOff);
    m_queue->Clear();
    Write(4);
    ExpectNothing();
}

TEST_F(TriggerClockTest, SingleModeGivesOneColorExposureForEachWrite) {
    for (std::uint64_t shot = 0; shot < 3; ++shot) {
        Write(4);
        ExpectNext(shot, true);
        ExpectNothing();
    }
    BoardState board;
    board.triggerMode = 4;
    m_clock.Apply(board, false);
    ExpectNothing();
    EXPECT_EQ(m_clock.Triggers(), 3U);
}

TEST_F(TriggerClockTest, EveryOtherModeIsOff) {
    for (const int mode : {-1, 0, 5, 7, 100}) {
        Write(mode);
    }
    ExpectNothing();
    EXPECT_EQ(m_clock.Triggers(), 0U);
}

TEST_F(TriggerClockTest, NothingComesOnceSwitchingOffHasReturned) {
    Write(6);
    ExpectNext(0, false);
    Write(kOff);
    m_queue->Clear();
    ExpectNothing();
}

TEST_F(TriggerClockTest, KeysWrapAt256AndTriggerNumbersGoOn) {
    Write(1);
    for (std::uint64_t trigger = 0; trigger < 300; ++trigger) {
        ExpectNext(trigger, false);
    }
}

TEST_F(TriggerClockTest, EachStartBeginsAtZero) {
    for (const int before : {kOff, 4}) {
        Write(1);
        ExpectNext(0, false);
        ExpectNext(1, false);
        Write(before);
        m_queue->Clear();
        Write(2);
        ExpectNext(0, false);
        Write(kOff);
        m_queue->Clear();
    }
}

TEST_F(TriggerClockTest, ChangeOfARunningModeOrPeriodGoesOnCounting) {
    Write(1, 5);
    ExpectNext(0, false);
    Write(2, 1);
    Write(6, 2);
    bool sawColor = false;
    for (std::uint64_t trigger = 1; !sawColor;) {
        const auto exposure = m_queue->Pop(std::chrono::steady_clock::now() + kGenerous);
        ASSERT_TRUE(exposure);
        sawColor = exposure->color;
        EXPECT_EQ(exposure->trigger, sawColor ? trigger - 1 : trigger++);
    }
}

TEST_F(TriggerClockTest, RewritingARunningModeDoesNotPostponeItsNextTrigger) {
    constexpr int kPeriod = 50;
    Write(1, kPeriod);
    const auto end = steady_clock::now() + 10s;
    while (m_clock.Triggers() < 3 && steady_clock::now() < end) {
        Write(1, kPeriod);
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_GE(m_clock.Triggers(), 3U);
}

TEST_F(TriggerClockTest, LongPeriodIsCutShortByAShorterOne) {
    Write(1, 10000000);
    ExpectNothing();
    Write(1, 1);
    ExpectNext(0, false);
}

TEST_F(TriggerClockTest, PeriodBelowOneCountsAsOne) {
    for (const int period : {0, -7}) {
        Write(1, period);
        ExpectNext(0, false);
        ExpectNext(1, false);
        Write(kOff);
        m_queue->Clear();
    }
}

TEST_F(TriggerClockTest, ExposureCarriesTheLightOfItsMoment) {
    BoardState board;
    board.triggerMode = 1;
    board.triggerPeriod = 1;
    board.laserEnable = true;
    board.projectorBrightness = 77;
    m_clock.Apply(board, true);
    const auto exposure = m_queue->Pop(std::chrono::steady_clock::now() + kGenerous);
    ASSERT_TRUE(exposure);
    EXPECT_TRUE(exposure->light.laserEnable);
    EXPECT_EQ(exposure->light.projectorBrightness, 77);
}

TEST_F(TriggerClockTest, NeverGivesMoreTriggersThanThePeriodAllows) {
    const auto start = steady_clock::now();
    Write(1, 5);
    for (std::uint64_t trigger = 0; trigger < 40; ++trigger) {
        ExpectNext(trigger, false);
    }
    EXPECT_GE(steady_clock::now() - start, 40 * 5ms);
}

TEST_F(TriggerClockTest, EveryAttachedQueueGetsEachExposureOnce) {
    const auto other = std::make_shared<ExposureQueue>(1000);
    m_clock.Attach(other);
    m_clock.Attach(other);
    Write(4);
    Write(4);
    ExpectNext(0, true);
    ExpectNext(1, true);
    EXPECT_EQ(other->Pop(std::chrono::steady_clock::now() + kGenerous).value().trigger, 0U);
    EXPECT_EQ(other->Pop(std::chrono::steady_clock::now() + kGenerous).value().trigger, 1U);
    EXPECT_FALSE(other->Pop(std::chrono::steady_clock::now() + 0ms));
    m_clock.Detach(other);
    Write(4);
    ExpectNext(2, true);
    EXPECT_FALSE(other->Pop(std::chrono::steady_clock::now() + 0ms));
}

TEST_F(TriggerClockTest, ExposuresWithoutRoomAreLostAndCountedAlsoAfterDetaching) {
    const auto small = std::make_shared<ExposureQueue>(2);
    m_clock.Attach(small);
    for (int i = 0; i < 5; ++i) {
        Write(4);
    }
    EXPECT_EQ(small->Lost(), 3U);
    EXPECT_EQ(m_clock.Lost(), 3U);
    EXPECT_EQ(small->Pop(std::chrono::steady_clock::now() + 0ms).value().trigger, 0U)
        << "the oldest stay";
    m_clock.Detach(small);
    EXPECT_EQ(m_clock.Lost(), 3U);
    EXPECT_EQ(m_clock.Triggers(), 5U);
}

}  // namespace
}  // namespace Korvex3Sync::tests
