#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "head/HeadSession.h"
#include "support/Accounted.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using support::WaitUntil;
using virtual_head::FaultKind;
using virtual_head::FaultOrder;
using virtual_head::HeadCounts;

constexpr int kPeriodMs = 2;

std::uint64_t Taken(const HeadCounts& counts) {
    return counts.mono.fetched + counts.color.fetched;
}

/// What the head did is what the library says that it delivered and lost.
class Account : public HeadSession {
protected:
    ~Account() override {
        DisConnectDevice(m_handle);  // before the collector goes
    }

    ScanStatistics Statistics() const {
        ScanStatistics statistics;
        EXPECT_EQ(GetScanStatistics(m_handle, statistics), STATUS_SUCCESS);
        return statistics;
    }

    /// Connects to a small head with these faults and sets the callback.
    void Scan(const std::vector<virtual_head::TimedFault>& faults, int buffers = 4096) {
        auto description = SmallHead();
        description.faults = faults;
        description.cameraBuffers = buffers;
        Request(description);
        ASSERT_EQ(Connect(), STATUS_SUCCESS);
        ASSERT_EQ(SetScanCallBackFunction(m_handle, &SetCollector::Receive, &m_sets),
                  STATUS_SUCCESS);
    }

    /// Waits until every fault has been met and good triggers have followed.
    void WaitForFaults() {
        ASSERT_TRUE(WaitUntil([this] { return Head().GetFaults().Unused().empty(); }))
            << Head().GetFaults().Unused().front();
        const auto triggers = Head().Clock().Triggers();
        ASSERT_TRUE(WaitUntil([&] { return Head().Clock().Triggers() >= triggers + 15; }));
    }

    /// Waits until every frame that was handed over has come to its end in the library.
    void Drain() {
        EXPECT_TRUE(WaitUntil([this] {
            const HeadCounts counts = Head().Counts();
            const ScanStatistics s = Statistics();
            return Taken(counts) + counts.mono.dropped + counts.color.dropped ==
                       counts.mono.handed + counts.color.handed &&
                   s.framesAccepted + s.refusedFrames + s.rejectedGeometry == Taken(counts) &&
                   support::AccountedTriggers(s) == Known(counts, s) &&
                   s.setsPending == (counts.color.made > 0 ? 0U : 1U);  // none is being delivered
        }));
    }

    /// The triggers that the library can know of when no camera missed the last ones.
    static std::uint64_t Known(const HeadCounts& counts, const ScanStatistics& s) {
        return counts.triggers - counts.mono.unattended - counts.mono.dropped -
               WithoutSize(counts, s);
    }

    /// The last frame of a camera that vanished before it was asked for the size of that frame.
    static std::uint64_t WithoutSize(const HeadCounts& counts, const ScanStatistics& s) {
        const std::uint64_t misSized = counts.mono.misSized + counts.color.misSized;
        const bool vanished = counts.mono.unattended > 0;
        return vanished && s.rejectedGeometry == misSized + 1 ? 1 : 0;
    }

    /// Everything that the library counts of frames, against what the head did.
    void ExpectSamePlaces() {
        const HeadCounts head = Head().Counts();
        const ScanStatistics s = Statistics();
        EXPECT_EQ(support::AccountedTriggers(s), Known(head, s));
        EXPECT_EQ(head.triggers, head.keysSkipped + head.mono.made);
        EXPECT_EQ(s.missingKeys, head.keysSkipped + head.mono.lost + head.mono.torn +
                                     head.mono.misSized + head.mono.lostInBuffers);
        EXPECT_EQ(s.repeatedKeys, head.mono.repeated);
        EXPECT_EQ(s.refusedFrames, head.mono.torn + head.color.torn);
        EXPECT_EQ(s.rejectedGeometry,
                  head.mono.misSized + head.color.misSized + WithoutSize(head, s));
        EXPECT_EQ(s.framesAccepted, Taken(head) - s.refusedFrames - s.rejectedGeometry);
        EXPECT_EQ(s.setsDelivered, m_sets.Count());
        EXPECT_EQ(s.setsDropped, 0U);
        EXPECT_EQ(s.setsWithoutCallback, 0U);
        EXPECT_EQ(s.unroutedFrames, 0U);
        EXPECT_EQ(s.undecodableFrames, 0U);
    }

    static virtual_head::TimedFault AtTrigger(const FaultOrder& order, std::uint64_t trigger) {
        virtual_head::TimedFault fault;
        fault.order = order;
        fault.atTrigger = trigger;
        return fault;
    }

    SetCollector m_sets;
};

/// A fault of frames, and what each time of it costs in a mode with colour.
struct Row {
    FaultKind kind;
    int times;
    std::uint64_t colorWithoutMono;
    std::uint64_t monoWithoutColor;
};

std::vector<Row> FaultsOfMono() {
    return {{FaultKind::LoseMono, 3, 1, 0},   {FaultKind::LoseBoth, 3, 0, 0},
            {FaultKind::TearMono, 3, 1, 0},   {FaultKind::MisSizeMono, 3, 1, 0},
            {FaultKind::RepeatMono, 3, 0, 1}, {FaultKind::Delay, 3, 0, 0},
            {FaultKind::SkipKeys, 9, 0, 0}};
}

std::vector<Row> FaultsOfColor() {
    return {{FaultKind::LoseColor, 3, 0, 1},
            {FaultKind::TearColor, 3, 0, 1},
            {FaultKind::MisSizeColor, 3, 0, 1},
            {FaultKind::RepeatColor, 3, 1, 0}};
}

class FrameAccount : public Account,
                     public testing::WithParamInterface<std::tuple<Row, CAMERA_TRIGGER_MODE>> {};

TEST_P(FrameAccount, IsTheSameInTheLibraryAndInTheHead) {
    const auto& [row, mode] = GetParam();
    FaultOrder order;
    order.kind = row.kind;
    order.times = row.times;
    order.byTriggers = row.kind == FaultKind::Delay ? 4 : 1;
    Scan({});
    ASSERT_EQ(Trigger(mode, kPeriodMs), STATUS_SUCCESS);
    // No colour is expected of a frame that is handled before the start of the trigger has
    // returned.
    for (int time = 0; time < 2; ++time) {
        ASSERT_TRUE(Head().GetFaults().Order(order));
        WaitForFaults();
    }
    ASSERT_EQ(TriggerOff(), STATUS_SUCCESS);
    Drain();
    ExpectSamePlaces();
    const bool color = mode == TRIGGER_LASER_LINES_COLOR;
    const auto met = static_cast<std::uint64_t>(2 * row.times);
    const HeadCounts head = Head().Counts();
    const ScanStatistics s = Statistics();
    EXPECT_EQ(s.colorWithoutMono, color ? met * row.colorWithoutMono : 0U);
    EXPECT_EQ(s.monoWithoutColor, color ? met * row.monoWithoutColor : 0U);
    EXPECT_EQ(s.setsWithColor,
              head.color.fetched - s.colorWithoutMono - head.color.torn - head.color.misSized);
}

std::string CaseName(
    const testing::TestParamInfo<std::tuple<Row, CAMERA_TRIGGER_MODE>>& parameter) {
    std::string name = virtual_head::Name(std::get<0>(parameter.param).kind);
    std::replace(name.begin(), name.end(), '-', '_');
    return name + "_mode_" + std::to_string(std::get<1>(parameter.param));
}

INSTANTIATE_TEST_SUITE_P(OfMono, FrameAccount,
                         testing::Combine(testing::ValuesIn(FaultsOfMono()),
                                          testing::Values(TRIGGER_LASER_LINES,
                                                          TRIGGER_LASER_LINES_COLOR)),
                         CaseName);
INSTANTIATE_TEST_SUITE_P(OfColor, FrameAccount,
                         testing::Combine(testing::ValuesIn(FaultsOfColor()),
                                          testing::Values(TRIGGER_LASER_LINES_COLOR)),
                         CaseName);

TEST_F(Account, OfManyFaultsAtOnceAddsUp) {
    std::vector<virtual_head::TimedFault> faults;
    for (const FaultKind kind :
         {FaultKind::LoseMono, FaultKind::LoseColor, FaultKind::LoseBoth, FaultKind::TearMono,
          FaultKind::TearColor, FaultKind::MisSizeMono, FaultKind::MisSizeColor,
          FaultKind::RepeatMono, FaultKind::RepeatColor, FaultKind::Delay, FaultKind::SkipKeys}) {
        virtual_head::TimedFault fault;
        fault.order.kind = kind;
        fault.chance = 0.05;
        faults.push_back(fault);
    }
    Scan(faults);
    ASSERT_EQ(Trigger(TRIGGER_PATTERN_COLOR, 1), STATUS_SUCCESS);
    ASSERT_TRUE(WaitUntil([this] { return Head().Clock().Triggers() >= 400; }));
    Head().GetFaults().Clear();
    WaitForFaults();
    ASSERT_EQ(TriggerOff(), STATUS_SUCCESS);
    Drain();
    ExpectSamePlaces();
    EXPECT_GT(Statistics().missingKeys, 0U);
}

TEST_F(Account, OfACameraThatStopsAndGoesOnAddsUp) {
    FaultOrder stop;
    stop.kind = FaultKind::CameraStop;
    Scan({AtTrigger(stop, 10)});
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, kPeriodMs), STATUS_SUCCESS);
    ASSERT_TRUE(WaitUntil([this] { return Head().Counts().mono.lost >= 20; }));
    Head().GetFaults().Frames().CameraStarted();
    WaitForFaults();
    ASSERT_EQ(TriggerOff(), STATUS_SUCCESS);
    Drain();
    ExpectSamePlaces();
}

TEST_F(Account, OfFullBuffersAddsUp) {
    Scan({}, 4);
    std::atomic<bool> hold = true;
    SetCollector slow([&](const ImageSet&, std::size_t) { WaitUntil([&] { return !hold; }); });
    const EndedFirst ended(*this);
    ASSERT_EQ(SetScanCallBackFunction(m_handle, &SetCollector::Receive, &slow), STATUS_SUCCESS);
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES, kPeriodMs), STATUS_SUCCESS);
    EXPECT_TRUE(WaitUntil([this] { return Head().Counts().mono.lostInBuffers >= 10; }));
    hold = false;
    const auto fetched = Head().Counts().mono.fetched;
    EXPECT_TRUE(WaitUntil([&] { return Head().Counts().mono.fetched >= fetched + 20; }));
    ASSERT_EQ(TriggerOff(), STATUS_SUCCESS);
    EXPECT_TRUE(WaitUntil([this] {
        const auto mono = Head().Counts().mono;
        return mono.fetched == mono.handed && Statistics().framesAccepted == mono.handed;
    }));
    // What was lost behind the last frame that arrived is known to the head only.
    const HeadCounts head = Head().Counts();
    EXPECT_LE(Statistics().missingKeys, head.mono.lostInBuffers);
    EXPECT_GE(Statistics().missingKeys, 10U);
    EXPECT_EQ(head.mono.made, head.mono.handed + head.mono.lostInBuffers);
    EXPECT_EQ(support::AccountedTriggers(Statistics()) - Statistics().missingKeys,
              head.mono.handed);
}

TEST_F(Account, OfALateOrMuteBoardLosesNoSet) {
    FaultOrder late;
    late.kind = FaultKind::BoardLate;
    late.extra = std::chrono::milliseconds(20);
    Scan({AtTrigger(late, 10)});
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, kPeriodMs), STATUS_SUCCESS);
    ASSERT_TRUE(WaitUntil([this] { return Head().Clock().Triggers() > 10; }));
    EXPECT_EQ(Project(m_handle, PROJECT_PATTERN_1), STATUS_SUCCESS);
    FaultOrder mute;
    mute.kind = FaultKind::BoardMute;
    ASSERT_TRUE(Head().GetFaults().Order(mute));
    EXPECT_EQ(Project(m_handle, PROJECT_PATTERN_2), STATUS_FAILED);
    mute.kind = FaultKind::BoardAnswer;
    ASSERT_TRUE(Head().GetFaults().Order(mute));
    WaitForFaults();
    ASSERT_EQ(TriggerOff(), STATUS_SUCCESS);
    Drain();
    ExpectSamePlaces();
    EXPECT_EQ(Statistics().missingKeys, 0U);
}

TEST_F(Account, OfABoardThatVanishesEndsWithItsLastTrigger) {
    FaultOrder vanish;
    vanish.kind = FaultKind::BoardVanish;
    Scan({AtTrigger(vanish, 30)});
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, kPeriodMs), STATUS_SUCCESS);
    ASSERT_TRUE(WaitUntil([this] { return !Head().GetFaults().Board().Plugged().Here(); }));
    EXPECT_EQ(TriggerOff(), STATUS_FAILED);
    Drain();
    ExpectSamePlaces();
    EXPECT_EQ(Head().Counts().triggers, 30U);
    EXPECT_EQ(Statistics().setsDelivered, 30U);
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    vanish.kind = FaultKind::BoardReturn;
    ASSERT_TRUE(Head().GetFaults().Order(vanish));
    EXPECT_EQ(Connect(), STATUS_SUCCESS);
}

TEST_F(Account, OfACameraThatVanishesEndsWithItsLastFrame) {
    FaultOrder vanish;
    vanish.kind = FaultKind::CameraVanish;
    Scan({AtTrigger(vanish, 30)});
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES, kPeriodMs), STATUS_SUCCESS);
    ASSERT_TRUE(WaitUntil([this] { return Head().Counts().mono.unattended >= 10; }));
    WaitForFaults();
    ASSERT_EQ(TriggerOff(), STATUS_SUCCESS);
    Drain();
    ExpectSamePlaces();
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    vanish.kind = FaultKind::CameraReturn;
    ASSERT_TRUE(Head().GetFaults().Order(vanish));
    EXPECT_EQ(Connect(), STATUS_SUCCESS);
}

TEST_F(Account, OfACameraThatVanishesBetweenAFrameAndItsSizeRejectsThatFrame) {
    Scan({});
    ASSERT_EQ(Trigger(TRIGGER_LASER_LINES, kPeriodMs), STATUS_SUCCESS);
    ASSERT_TRUE(WaitUntil([this] { return m_sets.Count() >= 10; }));
    ASSERT_TRUE(Head().GetFaults().Hang("GetResolution"));
    ASSERT_TRUE(Head().GetFaults().WaitForHang("GetResolution", std::chrono::minutes(1)));
    FaultOrder vanish;
    vanish.kind = FaultKind::CameraVanish;
    ASSERT_TRUE(Head().GetFaults().Order(vanish));
    Head().GetFaults().ReleaseHangs();
    ASSERT_TRUE(WaitUntil([this] { return Head().Counts().mono.unattended >= 10; }));
    ASSERT_EQ(TriggerOff(), STATUS_SUCCESS);
    Drain();
    ExpectSamePlaces();
    EXPECT_EQ(Statistics().rejectedGeometry, 1U);
}

TEST_F(Account, AMuteBoardKeepsNoConnectionFromClosing) {
    Scan({});
    FaultOrder mute;
    mute.kind = FaultKind::BoardMute;
    ASSERT_TRUE(Head().GetFaults().Order(mute));
    EXPECT_EQ(TriggerOff(), STATUS_FAILED);
    EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
    EXPECT_EQ(m_handle, nullptr);
}

}  // namespace
}  // namespace Korvex3Sync::tests
