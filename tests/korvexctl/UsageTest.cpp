#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "korvexctl/ExitCodes.h"
#include "korvexctl/Korvexctl.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

constexpr int kUsage = 2;

TEST(KorvexctlUsage, HelpNamesCommandsAndEveryExitCode) {
    const ChildResult help = RunKorvexctl({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    for (const char* word : {"list", "info", "scan", "--virtual", "--json", "--verbose", "--log"}) {
        EXPECT_THAT(help.output, HasSubstr(word));
    }
    EXPECT_THAT(help.output, HasSubstr(korvexctl::ExitCodeTable()));
    EXPECT_THAT(help.error, IsEmpty());
}

TEST(KorvexctlUsage, HelpOfScanNamesTheUnitOfEachOption) {
    const std::string help = RunKorvexctl({"scan", "--help"}).output;
    for (const char* line :
         {"--period MS", "--laser-duty PERCENT", "--brightness PERCENT", "--projector-duty PERCENT",
          "--strobe-duty PERCENT", "--timeout S", "--sets N", "--keep K", "--out DIR",
          "--mode MODE", "in milliseconds, 1 to 10000 (default 10)",
          "seconds, 0.1 to 3600 (default 5)", "a number without unit"}) {
        EXPECT_THAT(help, HasSubstr(line));
    }
}

TEST(KorvexctlUsage, VersionIsPrinted) {
    EXPECT_THAT(RunKorvexctl({"--version"}).output, MatchesRegex("korvexctl [0-9.]+\n"));
}

class BadUsage : public ::testing::TestWithParam<std::vector<std::string>> {};

TEST_P(BadUsage, IsRefusedWithOneLine) {
    const ChildResult result = RunKorvexctl(GetParam());
    EXPECT_EQ(result.exitCode, kUsage);
    EXPECT_THAT(result.output, IsEmpty());
    EXPECT_THAT(result.error, MatchesRegex("korvexctl: [^\n]+--help[^\n]*\n"));
}

INSTANTIATE_TEST_SUITE_P(
    CommandLines, BadUsage,
    ::testing::Values(std::vector<std::string>{}, std::vector<std::string>{"dance"},
                      std::vector<std::string>{"list", "--bogus"},
                      std::vector<std::string>{"list", "info"},
                      std::vector<std::string>{"scan", "--sets", "0"},
                      std::vector<std::string>{"scan", "--sets", "many"},
                      std::vector<std::string>{"scan", "--sets", "99999999999999999999"},
                      std::vector<std::string>{"scan", "--period", "-1"},
                      std::vector<std::string>{"scan", "--timeout", "0"},
                      std::vector<std::string>{"scan", "--timeout", "nan"},
                      std::vector<std::string>{"scan", "--timeout", "inf"},
                      std::vector<std::string>{"scan", "--sets", "5x"},
                      std::vector<std::string>{"scan", "--mode", "dark"},
                      std::vector<std::string>{"scan", "--mode", "5"},
                      std::vector<std::string>{"scan", "--laser-duty", "101"},
                      std::vector<std::string>{"scan", "--out"},
                      std::vector<std::string>{"--virtual", "head.toml", "list"}));

TEST(KorvexctlUsage, BadUsageWithJsonIsOneDocument) {
    const ChildResult result = RunKorvexctl({"scan", "--sets", "0", "--json"});
    EXPECT_EQ(result.exitCode, kUsage);
    EXPECT_EQ(ParseJson(result.output)["error"]["exit_code"], kUsage);
}

TEST(KorvexctlUsage, AHeadFileWithErrorsIsRefusedWithFileAndLine) {
    const TemporaryFolder folder;
    const auto file = WriteSmallHead(folder.Path(), "widht = 64\n");
    const ChildResult result = RunKorvexctl({"--virtual=" + file.string(), "list"});
    EXPECT_EQ(result.exitCode, 8);
    EXPECT_THAT(result.error, HasSubstr("korvexctl: " + file.string() + ":4: "));
    EXPECT_THAT(result.error, HasSubstr("widht"));
}

TEST(KorvexctlUsage, AMissingHeadFileIsRefused) {
    const ChildResult result = RunKorvexctl({"list", "--virtual=/no/such/head.toml", "--json"});
    EXPECT_EQ(result.exitCode, 8);
    EXPECT_THAT(ParseJson(result.output)["error"]["message"].get<std::string>(),
                HasSubstr("/no/such/head.toml"));
}

TEST(KorvexctlUsage, ALogFileThatCannotBeOpenedIsRefused) {
    const ChildResult result =
        RunKorvexctl({"list", "--virtual", "--json", "--log", "/no/such/folder/log"});
    EXPECT_EQ(result.exitCode, 6);
    EXPECT_EQ(ParseJson(result.output)["error"]["exit_code"], 6);
}

TEST(KorvexctlUsage, FullStandardOutputIsAnError) {
    ChildOptions options;
    options.outputFile = "/dev/full";
    for (const char* argument : {"--virtual", "--json", "--help"}) {
        const ChildResult result = RunKorvexctl({"--virtual", argument, "list"}, options);
        EXPECT_EQ(result.exitCode, 7) << argument;
        EXPECT_THAT(result.error, HasSubstr("standard output"));
    }
}

}  // namespace

}  // namespace Korvex3Sync::tests
