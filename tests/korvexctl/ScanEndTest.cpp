#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <thread>

#include "korvexctl/ErrorIntoFile.h"
#include "korvexctl/ScanOverHead.h"
#include "korvexctl/cli/ProgressBar.h"
#include "korvexctl/scan/ScanProgress.h"
#include "support/Pattern.h"
#include "support/Signals.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using korvexctl::Outcome;
using korvexctl::ScanProgress;
using ::testing::HasSubstr;
using virtual_head::FaultKind;

TEST_F(ScanOverHead, SecondsEndAScanAndSpreadItsPictures) {
    const TemporaryFolder folder;
    m_options.folder = folder.Path();
    m_options.end = {{}, 1.0};
    m_options.keep = 2;
    const Outcome outcome = Scan();
    EXPECT_EQ(outcome.code, ExitCode::Done) << outcome.message;
    EXPECT_EQ(outcome.figures["ended_by"], "seconds");
    EXPECT_TRUE(outcome.figures["sets"]["asked"].is_null());
    EXPECT_EQ(outcome.figures["seconds_asked"], 1.0);
    EXPECT_GT(outcome.figures["sets"]["delivered"].get<int>(), 5);
    ASSERT_EQ(outcome.figures["pictures"].size(), 2U);
    EXPECT_GE(outcome.figures["pictures"][1]["seconds"].get<double>(), 0.5);
}

TEST_F(ScanOverHead, AnEndlessScanEndsWellWithASignal) {
    m_options.end = {};
    std::thread person([this] {
        WaitForTriggers(20);
        RaiseSignal(kInterrupt);
    });
    const Outcome outcome = Scan();
    person.join();
    EXPECT_EQ(outcome.code, ExitCode::Done) << outcome.message;
    EXPECT_EQ(outcome.figures["ended_by"], "stop");
    EXPECT_EQ(outcome.figures["interrupted"], true);
    ExpectHeadLeftDark();
}

TEST_F(ScanOverHead, ASignalBeforeTheSecondsAreOverInterrupts) {
    m_options.end = {{}, 600.0};
    std::thread person([this] {
        WaitForTriggers(20);
        RaiseSignal(kInterrupt);
    });
    const Outcome outcome = Scan();
    person.join();
    EXPECT_EQ(outcome.code, ExitCode::Interrupted);
    EXPECT_THAT(outcome.message, HasSubstr(" sets arrived"));
}

/// A scan during which the board is unplugged after some triggers.
class ScanOverUnplugged : public ScanOverHead {
protected:
    Outcome ScanAndUnplug(std::uint64_t triggers, std::chrono::milliseconds lasting) {
        std::thread person([this, triggers, lasting] {
            WaitForTriggers(triggers);
            virtual_head::FaultOrder order{FaultKind::BoardVanish};
            order.lasting = lasting;
            EXPECT_TRUE(m_head->GetFaults().Order(order));
        });
        Outcome outcome = Scan();
        person.join();
        return outcome;
    }
};

TEST_F(ScanOverUnplugged, SetsThatDoNotComeAreLost) {
    m_options.end.sets = 300;
    m_options.timeoutSeconds = 1;
    const Outcome outcome = ScanAndUnplug(30, {});
    EXPECT_EQ(outcome.code, ExitCode::SetsMissing);
    EXPECT_THAT(outcome.message, HasSubstr("the board does not answer"));
    const int delivered = outcome.figures["sets"]["delivered"];
    EXPECT_LT(delivered, 300);
    EXPECT_EQ(outcome.figures["losses"]["not_arrived"], 300 - delivered);
    EXPECT_EQ(outcome.figures["board_lost"], true);
    EXPECT_EQ(outcome.figures["ended_by"], "timeout");
}

TEST_F(ScanOverUnplugged, SilenceAtTheEndOfTheSecondsIsALoss) {
    m_options.end = {{}, 2.0};
    m_options.timeoutSeconds = 30;
    const Outcome outcome = ScanAndUnplug(30, {});
    EXPECT_EQ(outcome.code, ExitCode::NotConnected) << "it cannot be switched off";
    EXPECT_EQ(outcome.figures["ended_by"], "seconds");
    // At 10 ms; it was unplugged within the first second, unless the machine stood still.
    const int delivered = outcome.figures["sets"]["delivered"];
    EXPECT_GE(outcome.figures["losses"]["not_arrived"].get<int>(), 150 - delivered);
    EXPECT_GT(outcome.figures["losses"]["not_arrived"].get<int>(), 0);
}

TEST_F(ScanOverUnplugged, ReconnectsCountsWhatWasMissedAndGoesOn) {
    // What this connection never wrote, the library would restore with values of its own.
    ASSERT_EQ(RunHere({"set", "laser-line-work-time", "777", "strobe-duty", "11", "12", "13",
                       "exposure.0", "7.5"})
                  .code,
              ExitCode::Done);
    const TemporaryFolder folder;
    m_options.folder = folder.Path();
    m_options.end.sets = 300;
    m_options.reconnect = true;
    const Outcome outcome = ScanAndUnplug(200, std::chrono::milliseconds(1500));
    ASSERT_EQ(outcome.code, ExitCode::Done) << outcome.message;
    const nlohmann::json& figures = *outcome.figures;
    EXPECT_EQ(figures["sets"]["delivered"], 300);
    std::istringstream sets(ReadText(folder.Path() / "sets.csv"));
    for (std::string line; std::getline(sets, line);) {
        EXPECT_THAT(line, ::testing::AnyOf(::testing::HasSubstr("lost_before"),
                                           ContainsPattern(",[01],0,[0-9.]+,[01],0$")))
            << "no set counts the restart of the keys as a loss";
    }
    ASSERT_EQ(figures["outages"].size(), 1U) << figures["outages"];
    const nlohmann::json& outage = figures["outages"][0];
    EXPECT_GE(outage["seconds"].get<double>(), 1.4);
    const int missed = outage["triggers"];
    EXPECT_NEAR(missed, outage["seconds"].get<double>() * 100, 2);
    EXPECT_EQ(figures["losses"]["while_away"], missed);
    EXPECT_EQ(figures["losses"]["missing_keys"], 0) << "the keys restart";
    EXPECT_TRUE(outage["not_restored"].empty()) << outage;
    EXPECT_EQ(figures["board_lost"], false);
    ExpectHeadLeftDark();
    EXPECT_EQ(RunHere({"get", "laser-line-work-time", "strobe-duty", "exposure.0"}).output,
              "laser-line-work-time 777 us\nstrobe-duty 11 12 13 percent\nexposure.0 7.5 ms\n");
}

TEST_F(ScanOverUnplugged, GivesUpOnAHeadThatStaysAway) {
    m_options.end.sets = 100;
    m_options.reconnect = true;
    m_options.timeoutSeconds = 2;
    const Outcome outcome = ScanAndUnplug(40, {});
    EXPECT_EQ(outcome.code, ExitCode::SetsMissing);
    EXPECT_TRUE(outcome.figures["outages"].empty()) << "it never came back";
    EXPECT_GT(outcome.figures["losses"]["not_arrived"].get<int>(), 0);
    EXPECT_GT(Commands({"zr3DInitHidDev"}).size(), 2U) << "it tried to reconnect";
}

TEST_F(ScanOverHead, ReconnectsCamerasThatStopped) {
    m_options.end.sets = 60;
    m_options.reconnect = true;
    std::thread person([this] {
        WaitForTriggers(20);
        EXPECT_TRUE(m_head->GetFaults().Order({FaultKind::CameraStop}));
    });
    const Outcome outcome = Scan();
    person.join();
    EXPECT_EQ(outcome.code, ExitCode::Done) << outcome.message;
    EXPECT_EQ(outcome.figures["outages"].size(), 1U);
}

TEST(ScanOptions, AHeadThatIsPluggedInAgainHasMoreTime) {
    korvexctl::ScanOptions options;
    EXPECT_EQ(options.TimeoutSeconds(), 5);
    options.reconnect = true;
    EXPECT_EQ(options.TimeoutSeconds(), 60);
    options.timeoutSeconds = 7;
    EXPECT_EQ(options.TimeoutSeconds(), 7);
}

TEST(ScanOptions, BuffersFollowTheSetsToKeep) {
    korvexctl::ScanOptions options;
    EXPECT_EQ(options.Buffers(), 32);
    options.keep = 100;
    EXPECT_EQ(options.Buffers(), 100);
    options.keep = 5000;
    EXPECT_EQ(options.Buffers(), 256);
    options.buffers = 1;
    EXPECT_EQ(options.Buffers(), 1);
}

korvexctl::ScanRecorder::Counts Counts(int delivered, double seconds) {
    korvexctl::ScanRecorder::Counts counts;
    counts.delivered = delivered;
    counts.last =
        counts.first + std::chrono::duration_cast<korvexctl::ScanRecorder::Clock::duration>(
                           std::chrono::duration<double>(seconds));
    return counts;
}

TEST(ScanProgress, TellsRateLossesAndTimeLeft) {
    ScanProgress progress{{300, {}}, Counts(101, 1), 1.2, 2, false};
    EXPECT_EQ(progress.Text(), "101/300 sets  100.0/s  2 lost  2 s left");
    EXPECT_DOUBLE_EQ(progress.Done().value(), 101.0 / 300);
    progress.end = {{}, 4000.0};
    EXPECT_EQ(progress.Text(), "101 sets  100.0/s  2 lost  1:06 h left");
    progress.seconds = 3000;
    EXPECT_EQ(progress.Text(), "101 sets  100.0/s  2 lost  16:40 min left");
    EXPECT_EQ(progress.Done(), 0.75);
    progress.end = {300, 3003.0};
    EXPECT_EQ(progress.Text(), "101/300 sets  100.0/s  2 lost  2 s left");
    progress.end = {};
    progress.away = true;
    EXPECT_EQ(progress.Text(), "101 sets  100.0/s  2 lost  reconnecting");
    EXPECT_FALSE(progress.Done());
    EXPECT_EQ((ScanProgress{{}, Counts(0, 0), 61, 0, false}).Text(), "0 sets  0 lost  1:01 min");
}

TEST(ProgressBar, GivesWayToAMessageAndComesBack) {
    const TemporaryFolder folder;
    const auto file = folder.Path() / "error";
    {
        const ErrorIntoFile errorIntoFile(file);
        const korvexctl::ProgressBar bar(true);
        korvexctl::Say("before");
        bar.Show(0.5, "1/2 sets");
        korvexctl::Say("interrupted");
        korvexctl::Say("and once more");
        bar.Show({}, "2 sets");
    }
    EXPECT_EQ(ReadText(file),
              "korvexctl: before\n"
              "\r\033[K[############............] 1/2 sets"
              "\r\033[Kkorvexctl: interrupted\n"
              "korvexctl: and once more\n"
              "\r\033[K2 sets"
              "\r\033[K");
}

TEST(ProgressBar, IsNotThereWhenItIsSwitchedOff) {
    const TemporaryFolder folder;
    const auto file = folder.Path() / "error";
    {
        const ErrorIntoFile errorIntoFile(file);
        const korvexctl::ProgressBar bar(false);
        bar.Show(0.5, "1/2 sets");
    }
    EXPECT_EQ(ReadText(file), "");
}

}  // namespace

}  // namespace Korvex3Sync::tests
