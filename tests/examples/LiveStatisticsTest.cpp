#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/Signals.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

ChildOptions WithHead(const std::string& head) {
    ChildOptions options;
    options.environment.emplace_back("KORVEX_VIRTUAL_HEAD", head);
    return options;
}

ChildResult LiveStatistics(const std::vector<std::string>& arguments, const std::string& head) {
    std::vector<std::string> command{KORVEX_LIVE_STATISTICS};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return RunChild(command, WithHead(head));
}

/// Small images, so that the test costs little.
std::string SmallHead(const TemporaryFolder& folder) {
    const auto file = folder.Path() / "head.toml";
    WriteText(file, "[camera]\nwidth = 64\nheight = 48\n");
    return file.string();
}

TEST(LiveStatistics, EndsByItself) {
    const TemporaryFolder folder;
    // Whether a set came by then is the machine's business.
    const ChildResult result = LiveStatistics({"--seconds", "1"}, SmallHead(folder));
    EXPECT_EQ(result.signal, 0);
    EXPECT_THAT(result.output, HasSubstr("End Disconnect"));
}

TEST(LiveStatistics, ShowsItsFigures) {
    const TemporaryFolder folder;
    ChildProcess program({KORVEX_LIVE_STATISTICS, "--plain"}, WithHead(SmallHead(folder)));
    ASSERT_TRUE(program.WaitForOutputMatching("\nsets +[1-9]"));
    program.Signal(kInterrupt);
    const ChildResult result = program.Wait();
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_THAT(result.output, AllOf(HasSubstr("\nrate      "), HasSubstr(" sets/s\n"),
                                     HasSubstr("\ncallback  "), HasSubstr("\nlost      ")));
    EXPECT_THAT(result.output, Not(HasSubstr("\033")));
}

TEST(LiveStatistics, CtrlCEndsItCleanly) {
    const TemporaryFolder folder;
    ChildProcess program({KORVEX_LIVE_STATISTICS}, WithHead(SmallHead(folder)));
    ASSERT_TRUE(program.WaitForOutput("sets/s"));
    program.Signal(kInterrupt);
    const ChildResult result = program.Wait();
    EXPECT_EQ(result.signal, 0);
    EXPECT_THAT(result.output, AllOf(HasSubstr("\033[H\033[2J"), HasSubstr("End Disconnect")));
}

TEST(LiveStatistics, WithoutAHeadItSaysSo) {
    const ChildResult result = LiveStatistics({"--seconds", "1"}, "");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.error, HasSubstr("no head"));
}

TEST(LiveStatistics, RefusesWhatItDoesNotKnow) {
    for (const char* argument : {"--seconds", "--fast"}) {
        const ChildResult result = LiveStatistics({argument}, "default");
        EXPECT_EQ(result.exitCode, 2) << argument;
        EXPECT_THAT(result.error, HasSubstr("usage"));
    }
}

}  // namespace

}  // namespace Korvex3Sync::tests
