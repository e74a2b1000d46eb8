#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "korvexctl/CommandOverHead.h"
#include "korvexctl/commands/StatusReport.h"
#include "support/Pattern.h"
#include "support/Signals.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::BoardStatus;
using korvexctl::ExitCode;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

std::vector<nlohmann::json> Records(const std::string& output) {
    std::vector<nlohmann::json> records;
    std::istringstream lines(output);
    for (std::string line; std::getline(lines, line);) {
        records.push_back(ParseJson(line));
    }
    return records;
}

TEST(KorvexctlStatus, ShowsTheFirstStatus) {
    const TemporaryFolder folder;
    ChildProcess status(
        KorvexctlCommand({"--virtual=" + WriteSmallHead(folder.Path()).string(), "status"}),
        WithoutHead());
    ASSERT_TRUE(status.WaitForOutput("\n"));
    status.Signal(kInterrupt);
    const ChildResult result = status.Wait();
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_THAT(result.output, MatchesPattern("[0-9T:.-]+Z  status 1 0  [^\n]*\n"));
}

TEST(KorvexctlStatus, EndsByItself) {
    const RequestedHead head(SmallHeadDescription());
    EXPECT_EQ(RunHere({"status", "--seconds", "0.1"}).code, ExitCode::Done);
}

TEST(KorvexctlStatus, EachChangeIsOneRecord) {
    // Four polls pass in silence; the next two go unanswered.
    const TemporaryFolder folder;
    const auto head = WriteSmallHead(folder.Path(),
                                     "[[fault]]\ncall = \"zr3DQueryCurrentStatus\"\n"
                                     "what = \"fail\"\ntimes = 6\nat_ms = 0\n");
    ChildProcess status(KorvexctlCommand({"--virtual=" + head.string(), "status", "--json"}),
                        WithoutHead());
    ASSERT_TRUE(status.WaitForOutput("\"status_a\":1,"));
    status.Signal(kInterrupt);
    const ChildResult result = status.Wait();
    EXPECT_EQ(result.exitCode, 0) << result.error;
    const std::vector<nlohmann::json> records = Records(result.output);
    ASSERT_EQ(records.size(), 2U) << result.output;
    EXPECT_EQ(records[0]["status_a"], 255);
    EXPECT_EQ(records[0]["status_b"], 255);
    EXPECT_EQ(records[0]["answers"], false);
    EXPECT_EQ(records[1]["status_a"], 1);
    EXPECT_EQ(records[1]["status_b"], 0);
    EXPECT_EQ(records[1]["answers"], true);
    EXPECT_THAT(records[1]["time"].get<std::string>(), EndsWith("Z"));
}

class KorvexctlStatusSignal : public ::testing::TestWithParam<int> {};

TEST_P(KorvexctlStatusSignal, EndsItCleanly) {
    const TemporaryFolder folder;
    const auto log = folder.Path() / "log";
    ChildProcess status(
        KorvexctlCommand({"--virtual=" + WriteSmallHead(folder.Path()).string(), "status", "--json",
                          "--mode", "laser", "--log", log.string()}),
        WithoutHead());
    ASSERT_TRUE(status.WaitForOutput("\"status_a\":1"));
    status.Signal(GetParam());
    const ChildResult result = status.Wait();
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_FALSE(Records(result.output).empty());
    EXPECT_THAT(ReadText(log), HasSubstr("DisConnectDevice"));
}

INSTANTIATE_TEST_SUITE_P(Signals, KorvexctlStatusSignal,
                         ::testing::Values(kInterrupt, kTerminate, kHangUp),
                         [](const auto& row) { return SignalName(row.param); });

TEST(KorvexctlStatus, WithoutAHeadTheErrorIsOneLine) {
    const ChildResult result = RunKorvexctl({"status", "--json"});
    EXPECT_EQ(result.exitCode, 3);
    const std::vector<nlohmann::json> records = Records(result.output);
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0]["error"]["exit_code"], 3);
}

TEST(KorvexctlStatus, AMuteBoardIsOneLineAndTheCodeOfOne) {
    const RequestedHead head(SmallHeadDescription());
    ASSERT_TRUE(head->GetFaults().Order({virtual_head::FaultKind::BoardMute}));
    const CommandResult result = RunHere({"status", "--seconds", "0.1"});
    EXPECT_EQ(result.code, ExitCode::NotConnected);
    EXPECT_EQ(result.message, "the board does not answer");
    EXPECT_THAT(result.output,
                MatchesPattern("[0-9T:.-]+Z  the board does not answer .255 255.  [^\n]*\n"));
    head->GetFaults().Clear();
}

TEST(KorvexctlStatus, ABoardThatIsPluggedInAgainIsReconnectedWithItsSettings) {
    const TemporaryFolder folder;
    const auto head = WriteSmallHead(folder.Path(),
                                     "[[fault]]\nwhat = \"board-vanish\"\nat_ms = 2500\n"
                                     "for_ms = 1000\n");
    ChildProcess status(KorvexctlCommand({"--virtual=" + head.string(), "status"}), WithoutHead());
    ASSERT_TRUE(status.WaitForOutput("the board does not answer (255 255)  losses unknown\n"));
    EXPECT_TRUE(status.WaitForOutputMatching("losses unknown\n[0-9T:.-]+Z  status 1 0  "));
    status.Signal(kInterrupt);
    EXPECT_EQ(status.Wait().exitCode, 0);
}

TEST(KorvexctlStatus, AHeadWithoutColourMissesNone) {
    const TemporaryFolder folder;
    const auto head = WriteSmallHead(folder.Path(), "color = false\n");
    ChildProcess status(KorvexctlCommand({"--virtual=" + head.string(), "status", "--json",
                                          "--mode", "laser-color"}),
                        WithoutHead());
    ASSERT_TRUE(status.WaitForOutput("\"status_a\":1"));
    status.Signal(kInterrupt);
    const std::vector<nlohmann::json> records = Records(status.Wait().output);
    ASSERT_FALSE(records.empty());
    EXPECT_EQ(records[0]["losses"]["mono_without_color"], 0);
}

TEST(KorvexctlStatus, SwitchesTheTriggerOnAndOff) {
    const RequestedHead head(SmallHeadDescription());
    EXPECT_EQ(RunHere({"status", "--seconds", "0.1", "--mode", "pattern"}).code, ExitCode::Done);
    EXPECT_THAT(head->GetJournal().Texts({"zr3DSetVideoTrigleMode"}),
                ::testing::ElementsAre("zr3DSetVideoTrigleMode(2) = true",
                                       "zr3DSetVideoTrigleMode(5) = true"));
}

TEST(StatusReport, ALineSaysWhatChanged) {
    const auto time = std::chrono::system_clock::time_point(std::chrono::milliseconds(86'400'007));
    const auto line = [time](BoardStatus board, nlohmann::json losses) {
        return korvexctl::StatusLine(time, {board, korvexctl::Figures(std::move(losses))});
    };
    EXPECT_EQ(line({3, 2}, nullptr), "1970-01-02T00:00:00.007Z  status 3 2  losses unknown");
    EXPECT_EQ(line({255, 255}, {{"missing_keys", 0}}),
              "1970-01-02T00:00:00.007Z  the board does not answer (255 255)  losses unknown");
    EXPECT_THAT(
        line({1, 0}, {{"missing_keys", 4}, {"sets_dropped", 2}}),
        EndsWith("lost: 4 triggers without a set; 2 sets dropped because too many were waiting"));
}

TEST(StatusReport, OneByteOf255IsAnAnswer) {
    EXPECT_TRUE((BoardStatus{255, 0}).Answers());
    EXPECT_TRUE((BoardStatus{0, 255}).Answers());
    EXPECT_FALSE((BoardStatus{255, 255}).Answers());
}

}  // namespace

}  // namespace Korvex3Sync::tests
