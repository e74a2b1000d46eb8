#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <optional>
#include <ostream>
#include <string>
#include <tuple>

#include "head/EverySetting.h"
#include "head/HeadSession.h"
#include "platform/os/TimeScale.h"
#include "soak/Accounts.h"
#include "support/ThreadState.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests {
namespace {

using support::WaitUntil;
using virtual_head::FaultKind;
using virtual_head::FaultOrder;

/// What the library waits for; what the head does takes its time as it is.
constexpr double kTimeScale = 0.02;
/// A snapshot that gets its frames waits for them as long as it does anywhere.
constexpr double kSnapshotTimeScale = 1;
/// For a snapshot that gets no frame: 200 ms.
constexpr double kHopelessTimeScale = 0.002;
constexpr std::chrono::minutes kPatience{1};
constexpr int kPeriodMs = 2;
constexpr std::size_t kEnoughSets = 20;

/// What goes wrong, and what calls answer meanwhile.
struct Trouble {
    const char* name;
    FaultOrder begin;
    std::optional<FaultKind> end;  // without it: by forgetting what was ordered
    bool boardAnswers;
    RETSTATUS boardCall;
    RETSTATUS snapshot;
    RETSTATUS reconnection;
    const char* reconnectionCall;  // where a reconnection meets it before anything is written back

    friend std::ostream& operator<<(std::ostream& out, const Trouble& trouble) {
        return out << trouble.name;
    }
};

FaultOrder Late(std::chrono::milliseconds extra) {
    FaultOrder order;
    order.kind = FaultKind::BoardLate;
    order.extra = extra;
    order.times = 1'000'000;
    return order;
}

std::vector<Trouble> Troubles() {
    return {{"BoardUnplugged",
             {FaultKind::BoardVanish},
             FaultKind::BoardReturn,
             false,
             STATUS_FAILED,
             STATUS_FAILED,
             STATUS_FAILED,
             "zr3DQueryCurrentStatus"},
            {"BoardThatOpensAndNeverAnswers",
             {FaultKind::BoardMute},
             FaultKind::BoardAnswer,
             false,
             STATUS_FAILED,
             STATUS_FAILED,
             STATUS_FAILED,
             "zr3DQueryCurrentStatus"},
            {"BoardThatAnswersLate", Late(std::chrono::milliseconds(10)), std::nullopt, true,
             STATUS_SUCCESS, STATUS_SUCCESS, STATUS_SUCCESS, "OpenCamera"},
            // A camera changes nothing in what a reconnection answers.
            {"CameraGone",
             {FaultKind::CameraVanish},
             FaultKind::CameraReturn,
             true,
             STATUS_SUCCESS,
             STATUS_FAILED,
             STATUS_SUCCESS,
             "OpenCamera"}};
}

/// The board executes the commands, but the library cannot know.
Trouble BoardThatAnswersTooLate() {
    return {"BoardThatAnswersTooLate",
            Late(std::chrono::minutes(10)),
            std::nullopt,
            false,
            STATUS_FAILED,
            STATUS_SUCCESS,
            STATUS_FAILED,
            "zr3DQueryCurrentStatus"};
}

enum class Moment { Scan, Snapshot, StatusPoll, Reconnection, WritingBack };

class TroubleOfHead : public HeadSession,
                      public testing::WithParamInterface<std::tuple<Trouble, Moment>> {
protected:
    ~TroubleOfHead() override {
        DisConnectDevice(m_handle);  // before what the callbacks use goes
        for (unsigned char* image : m_images) {
            delete[] image;
        }
    }

    void ScanWithEverySetting() {
        ASSERT_EQ(Connect(), STATUS_SUCCESS);
        SetEverySetting(m_handle);
        SetScan();
        WatchStatus();
        ASSERT_TRUE(m_sets.WaitFor(kEnoughSets));
    }
    void SetScan() {
        EXPECT_EQ(SetScanCallBackFunction(m_handle, &SetCollector::Receive, &m_sets),
                  STATUS_SUCCESS);
    }
    void WatchStatus() {
        EXPECT_EQ(SetStatusCallBackFunction(m_handle, &TroubleOfHead::OnStatus, this),
                  STATUS_SUCCESS);
    }
    /// When it returns no poll is under way, and none comes.
    void EndPolls() {
        EXPECT_EQ(SetStatusCallBackFunction(m_handle, nullptr, nullptr), STATUS_SUCCESS);
    }

    void Begin() { ASSERT_TRUE(Head().GetFaults().Order(TheTrouble().begin)); }
    void End() {
        if (TheTrouble().end) {
            ASSERT_TRUE(Head().GetFaults().Order({*TheTrouble().end}));
        } else {
            Head().GetFaults().Clear();
        }
    }
    /// Begins while the operation is in this call, which fails too.
    RETSTATUS BeginDuring(const std::string& call, const std::function<RETSTATUS()>& operation,
                          double timeScale = kTimeScale) {
        EXPECT_TRUE(Head().GetFaults().Hang(call));
        auto result = std::async(std::launch::async, operation);
        EXPECT_TRUE(Head().GetFaults().WaitForHang(call, kPatience)) << call;
        Begin();
        const os::ScopedTimeScale scale(timeScale);
        Head().GetFaults().ReleaseHangs();
        return result.get();
    }

    void Interrupt() {
        switch (TheMoment()) {
            case Moment::Scan:
                Begin();
                break;
            case Moment::Snapshot:
                InterruptSnapshot();
                break;
            case Moment::StatusPoll:
                InterruptPoll();
                break;
            case Moment::Reconnection:
                EndPolls();  // they would meet the hang as well
                EXPECT_EQ(BeginDuring(TheTrouble().reconnectionCall, Reconnect()),
                          TheTrouble().reconnection);
                break;
            case Moment::WritingBack:
                EXPECT_EQ(BeginDuring("zr3DSetLedWorkTime", Reconnect()), STATUS_SUCCESS)
                    << "what is written back answers nothing that counts";
                break;
        }
    }

    void InterruptSnapshot() {
        EndPolls();  // a board that they find lost is not triggered
        const bool succeeds = TheTrouble().snapshot == STATUS_SUCCESS;
        if (!succeeds) {
            EndScan();
        }
        int width = 0;
        int height = 0;
        const auto snap = [&] {
            double exposure = 8.5;
            int gain = 3;
            return SnapColorImage(m_handle, m_images, width, height, 1, exposure, gain,
                                  CONTROL_ROUTE_2);
        };
        EXPECT_EQ(BeginDuring("ResetCameraState", snap,
                              succeeds ? kSnapshotTimeScale : kHopelessTimeScale),
                  TheTrouble().snapshot);
        EXPECT_EQ(m_images.size(), succeeds ? 2U : 0U);
        EXPECT_EQ(width, succeeds ? 1280 : 0);
    }

    /// No frame of the scan is left, so that none is taken for one of a snapshot.
    void EndScan() {
        ASSERT_EQ(TriggerOff(), STATUS_SUCCESS);
        ASSERT_TRUE(WaitUntil([this] {
            const virtual_head::HeadCounts counts = Head().Counts();
            const std::uint64_t fetched = counts.mono.fetched + counts.color.fetched;
            const std::uint64_t dropped = counts.mono.dropped + counts.color.dropped;
            const ScanStatistics library = Statistics();
            return counts.mono.handed + counts.color.handed == fetched + dropped &&
                   library.framesAccepted == fetched && library.setsPending == 0;
        }));
    }

    void InterruptPoll() {
        ASSERT_TRUE(WaitUntil([&] { return m_good > 0; }));
        const int lost = m_lost;
        BeginDuring("zr3DQueryCurrentStatus", [&] {
            EXPECT_TRUE(WaitUntil([&] { return m_lost > lost; })) << "it is reported";
            return STATUS_SUCCESS;
        });
        if (TheTrouble().boardAnswers) {
            const int good = m_good;
            EXPECT_TRUE(WaitUntil([&] { return m_good >= good + 3; })) << "the polls go on";
            EXPECT_EQ(m_lost, lost + 1) << "the one that was interrupted";
        }
    }

    std::function<RETSTATUS()> Reconnect() {
        return [this] { return ReconnectDevice(m_handle); };
    }

    /// Operations of another thread, for each lock, return. A status callback is not set on a board
    /// that is silent, since that only waits for one more answer.
    void ExpectNoLockHeld(bool boardAnswers = true) {
        auto others = std::async(std::launch::async, [this, boardAnswers] {
            double exposure = 0.0;
            int gain = 0;
            Project(m_handle, PROJECT_PATTERN_2);
            EXPECT_EQ(GetCameraExposureAndGain(m_handle, 1, exposure, gain), STATUS_SUCCESS);
            Statistics();
            SetScan();
            if (boardAnswers) {
                WatchStatus();
            }
        });
        ASSERT_EQ(others.wait_for(kPatience), std::future_status::ready);
    }

    ScanStatistics Statistics() const {
        ScanStatistics statistics;
        EXPECT_EQ(GetScanStatistics(m_handle, statistics), STATUS_SUCCESS);
        return statistics;
    }

    /// What a reconnection writes back: what was asked for last, whether it got there or not.
    ChangedSettings Asked() const {
        ChangedSettings asked;
        asked.brightness = 55;
        if (TheMoment() == Moment::Snapshot) {
            asked.strobe = "2, 1";
            asked.triggerMode = 4;
        }
        return asked;
    }
    void ExpectEverySettingThere() {
        EXPECT_EQ(WrittenSinceOpening(Head()), EverySettingWritten(Asked()));
        EXPECT_EQ(Head().Board().State().projectorBrightness, Asked().brightness);
        EXPECT_EQ(Head().Board().State().triggerMode, Asked().triggerMode);
        EXPECT_TRUE(Head().Board().State().heartbeat);
        double exposure = 0.0;
        int gain = 0;
        EXPECT_EQ(GetCameraExposureAndGain(m_handle, 1, exposure, gain), STATUS_SUCCESS);
        EXPECT_EQ(exposure, 8.5);
        EXPECT_EQ(gain, 3);
    }

    void ExpectTheScanToGoOn() {
        ASSERT_TRUE(WaitUntil([this] { return Project(m_handle, PROJECT_PATTERN_2) == 7; }))
            << "a good poll ends the mark of a lost board";
        if (TheMoment() == Moment::Snapshot) {
            ASSERT_EQ(Trigger(TRIGGER_LASER_LINES_COLOR, kPeriodMs), STATUS_SUCCESS);
        }
        EXPECT_TRUE(m_sets.WaitFor(m_sets.Count() + kEnoughSets));
    }

    /// Ends the connection; every frame since `before` is accounted for.
    void ExpectAccounted(const virtual_head::HeadCounts& before) {
        EXPECT_EQ(TriggerOff(), STATUS_SUCCESS);
        EXPECT_EQ(CloseDeviceCamera(m_handle), STATUS_SUCCESS);
        const ScanStatistics library = Statistics();
        EXPECT_EQ(library.missingKeys, 0U) << "what no camera saw meanwhile is not lost";
        EXPECT_EQ(library.repeatedKeys, 0U);
        EXPECT_EQ(library.refusedFrames, 0U);
        EXPECT_EQ(library.setsDelivered, m_sets.Count());
        EXPECT_EQ(DisConnectDevice(m_handle), STATUS_SUCCESS);
        for (const std::string& difference :
             soak::Differences(soak::Between(before, Head().Counts()), library)) {
            ADD_FAILURE() << difference;
        }
    }

    static const Trouble& TheTrouble() { return std::get<0>(GetParam()); }
    static Moment TheMoment() { return std::get<1>(GetParam()); }

    SetCollector m_sets{[](const ImageSet&, std::size_t) {}};

private:
    static void OnStatus(const void* const& context, const unsigned char& first,
                         const unsigned char& second) {
        auto* const test = static_cast<TroubleOfHead*>(const_cast<void*>(context));
        ++(first == 255 && second == 255 ? test->m_lost : test->m_good);
    }

    os::ScopedTimeScale m_scale{kTimeScale};
    std::vector<unsigned char*> m_images;
    std::atomic<int> m_good{0};
    std::atomic<int> m_lost{0};
};

TEST_P(TroubleOfHead, IsOverWithAReconnection) {
    Request(SmallHead());
    const std::size_t threads = support::ThreadCount();
    const virtual_head::HeadCounts before = Head().Counts();
    ScanWithEverySetting();
    Interrupt();

    EXPECT_EQ(SetProjectorBrightness(m_handle, Asked().brightness), TheTrouble().boardCall);
    if (TheTrouble().boardAnswers || TheMoment() != Moment::Reconnection) {
        EXPECT_EQ(ReconnectDevice(m_handle), TheTrouble().reconnection) << "it has not ended";
    }
    ExpectNoLockHeld(TheTrouble().boardAnswers);

    End();
    EXPECT_EQ(ReconnectDevice(m_handle), STATUS_SUCCESS);
    ExpectEverySettingThere();
    ExpectTheScanToGoOn();
    ExpectNoLockHeld();
    ExpectAccounted(before);
    EXPECT_TRUE(WaitUntil([&] { return support::ThreadCount() <= threads; }))
        << threads << " threads before, " << support::ThreadCount() << " after";
}

std::string CaseName(const testing::TestParamInfo<std::tuple<Trouble, Moment>>& parameter) {
    constexpr const char* kMoments[] = {"DuringScan", "DuringSnapshot", "DuringStatusPoll",
                                        "DuringReconnection", "WhileWritingBack"};
    return std::string(std::get<0>(parameter.param).name) +
           kMoments[static_cast<int>(std::get<1>(parameter.param))];
}

INSTANTIATE_TEST_SUITE_P(Every, TroubleOfHead,
                         testing::Combine(testing::ValuesIn(Troubles()),
                                          testing::Values(Moment::Scan, Moment::Snapshot,
                                                          Moment::StatusPoll, Moment::Reconnection,
                                                          Moment::WritingBack)),
                         CaseName);
INSTANTIATE_TEST_SUITE_P(Obedient, TroubleOfHead,
                         testing::Combine(testing::Values(BoardThatAnswersTooLate()),
                                          testing::Values(Moment::Scan, Moment::Snapshot,
                                                          Moment::StatusPoll, Moment::Reconnection,
                                                          Moment::WritingBack)),
                         CaseName);

}  // namespace
}  // namespace Korvex3Sync::tests
