#include <atomic>
#include <chrono>
#include <ostream>
#include <thread>

#include "head/HeadSession.h"
#include "platform/os/Event.h"
#include "support/Accounted.h"
#include "support/Deadline.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using support::AccountedTriggers;
using support::WaitUntil;

/// Compares the counts of the connection with those of the head.
class Losses : public HeadSession {
protected:
    ScanStatistics Statistics() {
        ScanStatistics statistics;
        EXPECT_EQ(GetScanStatistics(m_handle, statistics), STATUS_SUCCESS);
        return statistics;
    }
    bool WaitForTriggers(std::uint64_t triggers) {
        return WaitUntil([&] { return Head().Clock().Triggers() >= triggers; });
    }
    /// The account once the cameras have given all frames, each has come to its end, and `pending`
    /// sets are left. A frame counts as accepted before it is dealt with.
    ScanStatistics Drained(std::uint64_t framesPerTrigger, std::uint64_t pending) {
        const std::uint64_t frames =
            framesPerTrigger * Head().Clock().Triggers() - Head().Clock().Lost();
        EXPECT_TRUE(WaitUntil([&] {
            const ScanStatistics now = Statistics();
            return now.framesAccepted == frames && now.setsPending == pending &&
                   AccountedTriggers(now) - now.missingKeys == frames / framesPerTrigger;
        })) << Statistics().framesAccepted
            << " of " << frames << " frames, " << Statistics().setsPending << " sets pending, "
            << AccountedTriggers(Statistics()) << " triggers accounted for, "
            << Statistics().missingKeys << " of them missing";
        return Statistics();
    }
    static void ExpectNothingLost(const ScanStatistics& statistics) {
        EXPECT_EQ(statistics.refusedFrames, 0u);
        EXPECT_EQ(statistics.rejectedGeometry, 0u);
        EXPECT_EQ(statistics.undecodableFrames, 0u);
        EXPECT_EQ(statistics.unroutedFrames, 0u);
        EXPECT_EQ(statistics.colorWithoutMono, 0u);
        EXPECT_EQ(statistics.monoWithoutColor, 0u);
        EXPECT_EQ(statistics.repeatedKeys, 0u);
        EXPECT_EQ(statistics.setsDropped, 0u);
        EXPECT_EQ(statistics.missingKeys, 0u);
        EXPECT_EQ(statistics.setsWithoutCallback, 0u);
        EXPECT_EQ(statistics.colorForSnapshot, 0u);
    }
};

struct ModeRow {
    CAMERA_TRIGGER_MODE mode;
    std::uint64_t frames;   // for each trigger
    std::uint64_t pending;  // after a stop
    friend std::ostream& operator<<(std::ostream& out, const ModeRow& row) {
        return out << "mode " << int{row.mode};
    }
};

class LossesInModes : public Losses, public testing::WithParamInterface<ModeRow> {};

TEST_P(LossesInModes, TheTriggersOfTwoRunsAddUpAndNothingIsLost) {
    const ModeRow row = GetParam();
    Request(SmallHead());
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    SetCollector sets([](const ImageSet&, std::size_t) {});
    const EndedFirst ended(*this);
    SetScanCallBackFunction(m_handle, &SetCollector::Receive, &sets);
    for (std::uint64_t run = 1; run <= 2; ++run) {
        ASSERT_EQ(Trigger(row.mode, 1), STATUS_SUCCESS);
        ASSERT_TRUE(WaitForTriggers(300 * run)) << "more than one round of keys";
        ASSERT_EQ(TriggerOff(), STATUS_SUCCESS);
    }
    const std::uint64_t triggers = Head().Clock().Triggers();
    const ScanStatistics statistics = Drained(row.frames, row.pending);
    EXPECT_EQ(AccountedTriggers(statistics), triggers);
    EXPECT_EQ(statistics.setsDelivered, triggers - row.pending);
    EXPECT_EQ(statistics.setsDelivered, sets.Count());
    EXPECT_EQ(statistics.setsWithColor, row.frames == 2 ? triggers : 0);
    ExpectNothingLost(statistics);
}

INSTANTIATE_TEST_SUITE_P(All, LossesInModes,
                         testing::Values(ModeRow{TRIGGER_LASER_LINES, 1, 1},
                                         ModeRow{TRIGGER_PATTERN, 1, 1},
                                         ModeRow{TRIGGER_PATTERN_COLOR, 2, 0},
                                         ModeRow{TRIGGER_LASER_LINES_COLOR, 2, 0}),
                         [](const auto& row) { return "Mode" + std::to_string(row.param.mode); });

TEST_F(Losses, SingleColourExposuresStandBesideTheSets) {
    Request(SmallHead());
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    SetCollector sets;
    const EndedFirst ended(*this);
    SetScanCallBackFunction(m_handle, &SetCollector::Receive, &sets);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
    ASSERT_TRUE(WaitForTriggers(10));
    for (int single = 0; single < 3; ++single) {
        ASSERT_EQ(Trigger(TRIGGER_SINGLE_COLOR, 2), STATUS_SUCCESS);
    }
    const std::uint64_t before = Head().Clock().Triggers();
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
    ASSERT_TRUE(WaitForTriggers(before + 10));
    ASSERT_EQ(TriggerOff(), STATUS_SUCCESS);
    // Setting the period while single exposures are on gives none.
    const std::uint64_t triggers = Head().Clock().Triggers();
    ASSERT_TRUE(WaitUntil([&] {
        const ScanStatistics now = Statistics();
        return AccountedTriggers(now) + now.colorWithoutMono == triggers && now.setsPending == 0;
    }));
    const ScanStatistics statistics = Statistics();
    EXPECT_EQ(statistics.colorWithoutMono, 3u);
    EXPECT_EQ(AccountedTriggers(statistics), triggers - 3);
    EXPECT_EQ(statistics.missingKeys, 0u) << "the keys began at 0 again after the single exposures";
    EXPECT_EQ(statistics.monoWithoutColor, 0u);
}

TEST_F(Losses, AChangeOfTheModeWhileTheTriggerRunsMissesNothing) {
    Request(SmallHead());
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    SetCollector sets;
    const EndedFirst ended(*this);
    SetScanCallBackFunction(m_handle, &SetCollector::Receive, &sets);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES, 2), STATUS_SUCCESS);
    ASSERT_TRUE(WaitForTriggers(20));
    ASSERT_EQ(EnableVideoTrigger(m_handle, TRIGGER_PATTERN_COLOR, true), STATUS_SUCCESS);
    ASSERT_TRUE(WaitForTriggers(Head().Clock().Triggers() + 20));
    ASSERT_EQ(TriggerOff(), STATUS_SUCCESS);
    const std::uint64_t triggers = Head().Clock().Triggers();
    ASSERT_TRUE(WaitUntil([&] {
        const ScanStatistics now = Statistics();
        return AccountedTriggers(now) == triggers && now.setsPending == 0;
    }));
    EXPECT_EQ(Statistics().missingKeys, 0u);
    EXPECT_EQ(Statistics().repeatedKeys, 0u);
    EXPECT_EQ(Statistics().colorWithoutMono, 0u);
}

TEST_F(Losses, ARunThatAResetOfTheFpgaEndedAndTheNextOneMissNothing) {
    Request(SmallHead());
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    SetCollector sets;
    const EndedFirst ended(*this);
    SetScanCallBackFunction(m_handle, &SetCollector::Receive, &sets);
    for (int run = 0; run < 2; ++run) {
        ASSERT_EQ(Trigger(TRIGGER_LASER_LINES, 2), STATUS_SUCCESS);
        ASSERT_TRUE(WaitForTriggers(Head().Clock().Triggers() + 20));
        ASSERT_EQ(ReconnectDevice(m_handle, true, false), STATUS_SUCCESS);
    }
    const ScanStatistics statistics = Drained(1, 1);
    EXPECT_EQ(AccountedTriggers(statistics), Head().Clock().Triggers());
    ExpectNothingLost(statistics);
}

TEST_F(Losses, FramesThatWaitInTheCameraOverAStopAndAStartAreNotMissing) {
    Request(SmallHead());
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    os::Event entered;
    os::Event go;
    SetCollector sets([&](const ImageSet&, std::size_t number) {
        if (number == 0) {
            entered.Set();
            go.Wait(kDeadline);
        }
    });
    const EndedFirst ended(*this);
    SetScanCallBackFunction(m_handle, &SetCollector::Receive, &sets);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES, 2), STATUS_SUCCESS);
    EXPECT_EQ(entered.Wait(kDeadline), os::WaitResult::Signalled);
    EXPECT_TRUE(WaitForTriggers(40));
    EXPECT_EQ(TriggerOff(), STATUS_SUCCESS);
    const std::uint64_t former = Head().Clock().Triggers();
    EXPECT_EQ(Trigger(TRIGGER_LASER_LINES, 2), STATUS_SUCCESS);
    EXPECT_TRUE(WaitForTriggers(former + 20));
    EXPECT_EQ(TriggerOff(), STATUS_SUCCESS);
    const ScanStatistics held = Statistics();
    EXPECT_EQ(held.setsDelivered, 0u) << "the first set is still in its callback";
    EXPECT_EQ(held.setsPending, 2u) << "that one, and the one that sent it on its way";
    go.Set();
    const ScanStatistics statistics = Drained(1, 1);
    EXPECT_EQ(AccountedTriggers(statistics), Head().Clock().Triggers());
    ExpectNothingLost(statistics);
}

TEST_F(Losses, ASlowCallbackShowsInItsTimes) {
    Request(SmallHead());
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    constexpr std::chrono::milliseconds kSlept{30};
    SetCollector sets([&](const ImageSet&, std::size_t number) {
        if (number == 10) {
            std::this_thread::sleep_for(kSlept);
        }
    });
    const EndedFirst ended(*this);
    SetScanCallBackFunction(m_handle, &SetCollector::Receive, &sets);
    EXPECT_EQ(Statistics().callbackLongestUs, 0u);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 2), STATUS_SUCCESS);
    ASSERT_TRUE(WaitForTriggers(60));
    ASSERT_EQ(TriggerOff(), STATUS_SUCCESS);
    const ScanStatistics statistics = Drained(2, 0);
    EXPECT_GE(statistics.callbackP50Us, 1u);
    EXPECT_LE(statistics.callbackP50Us, statistics.callbackP99Us);
    EXPECT_LE(statistics.callbackP99Us, statistics.callbackLongestUs);
    EXPECT_GE(statistics.callbackLongestUs,
              static_cast<std::uint64_t>(std::chrono::microseconds(kSlept).count()));
    ExpectNothingLost(statistics);
}

TEST_F(Losses, CanBeReadInsideAScanCallback) {
    Request(SmallHead());
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    SetCollector sets([&](const ImageSet&, std::size_t number) {
        const ScanStatistics inside = Statistics();
        EXPECT_EQ(inside.setsDelivered, number) << "this one has not returned";
        EXPECT_EQ(AccountedTriggers(inside), number + inside.setsPending);
    });
    const EndedFirst ended(*this);
    SetScanCallBackFunction(m_handle, &SetCollector::Receive, &sets);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES, 2), STATUS_SUCCESS);
    EXPECT_TRUE(WaitForTriggers(20));
    EXPECT_EQ(TriggerOff(), STATUS_SUCCESS);
    EXPECT_EQ(Drained(1, 1).setsDelivered, Head().Clock().Triggers() - 1);
}

TEST_F(Losses, WhatFindsNoRoomInTheCameraIsMissing) {
    auto description = SmallHead();
    description.cameraBuffers = 1;
    Request(description);
    ASSERT_EQ(Connect(), STATUS_SUCCESS);
    os::Event entered;
    os::Event go;
    std::vector<unsigned> keys;
    SetCollector sets([&](const ImageSet& set, std::size_t number) {
        keys.push_back(set.Key());
        if (number == 0) {
            entered.Set();
            go.Wait(kDeadline);
        }
    });
    const EndedFirst ended(*this);
    SetScanCallBackFunction(m_handle, &SetCollector::Receive, &sets);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES, 10), STATUS_SUCCESS);
    EXPECT_EQ(entered.Wait(kDeadline), os::WaitResult::Signalled);
    EXPECT_TRUE(WaitUntil([&] { return Head().Clock().Lost() >= 10; }));
    go.Set();
    ASSERT_TRUE(sets.WaitFor(5));
    ASSERT_EQ(TriggerOff(), STATUS_SUCCESS);
    const std::uint64_t triggers = Head().Clock().Triggers();
    const std::uint64_t lost = Head().Clock().Lost();
    const ScanStatistics statistics = Drained(1, 1);

    // The last frame that came is sent on its way by the next run; on a busy machine some triggers
    // after it may have been lost, of which nothing can be known.
    const std::size_t last = sets.Count();
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES, 10), STATUS_SUCCESS);
    ASSERT_TRUE(sets.WaitFor(last + 1));
    ASSERT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    const std::uint64_t after = (triggers - 1 - keys.at(last)) % 256;
    EXPECT_EQ(statistics.missingKeys, lost - after);
    EXPECT_GE(statistics.missingKeys, 9u);
    EXPECT_EQ(AccountedTriggers(statistics), triggers - after);
    EXPECT_EQ(statistics.setsDelivered, last);
}

TEST_F(Losses, AreCountedFromZeroForEachConnection) {
    Request(SmallHead());
    for (int connection = 0; connection < 2; ++connection) {
        ASSERT_EQ(Connect(), STATUS_SUCCESS);
        EXPECT_EQ(Statistics().framesAccepted, 0u);
        ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, 1), STATUS_SUCCESS);
        ASSERT_TRUE(WaitUntil([&] { return Statistics().setsWithoutCallback >= 5; }));
        EXPECT_EQ(Statistics().setsDelivered, 0u);
        ASSERT_EQ(TriggerOff(), STATUS_SUCCESS);
        ASSERT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
