#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

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
                      std::vector<std::string>{"scan", "--out="},
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

TEST(KorvexctlUsage, AHeadFileWhoseImagesAreMissingIsRefusedWithFileAndLine) {
    const TemporaryFolder folder;
    const auto file = WriteSmallHead(folder.Path(), "\n[replay]\nfolder = \"none\"\n");
    const ChildResult result = RunKorvexctl({"--virtual=" + file.string(), "list"});
    EXPECT_EQ(result.exitCode, 8);
    EXPECT_THAT(result.error, HasSubstr("korvexctl: " + file.string() + ":6: [replay] folder: " +
                                        (folder.Path() / "none").string() + ": "));
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

TEST(KorvexctlUsage, ALogThatIsFullIsWarnedOfOnceAndTheCommandGoesOn) {
    const ChildResult result =
        RunKorvexctl({"list", "--virtual", "--json", "--verbose", "--log", "/dev/full"});
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_FALSE(ParseJson(result.output)["cameras"].empty());
    const std::string warning = "korvexctl: the log file /dev/full is not whole: ";
    const std::size_t first = result.error.find(warning);
    ASSERT_NE(first, std::string::npos) << result.error;
    EXPECT_EQ(result.error.find(warning, first + 1), std::string::npos) << result.error;
}

TEST(KorvexctlUsage, ALogThatNobodyReadsIsRefused) {
    const TemporaryFolder folder;
    const auto fifo = folder.Path() / "log";
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    const ChildResult result = RunKorvexctl({"list", "--virtual", "--log", fifo.string()});
    EXPECT_EQ(result.exitCode, 6);
    EXPECT_THAT(result.error, HasSubstr("cannot open the log file " + fifo.string() +
                                        ": nobody is there to read it"));
}

class EmptyName : public ::testing::TestWithParam<std::vector<std::string>> {};

TEST_P(EmptyName, IsRefusedWithItsOption) {
    std::vector<std::string> arguments = GetParam();
    const std::string option = arguments.back();
    arguments.pop_back();
    const ChildResult result = RunKorvexctl(arguments);
    EXPECT_EQ(result.exitCode, kUsage);
    EXPECT_THAT(result.error, HasSubstr("korvexctl: " + option + ": the name is empty"));
}

// What is expected to be named stands last.
INSTANTIATE_TEST_SUITE_P(
    CommandLines, EmptyName,
    ::testing::Values(std::vector<std::string>{"--virtual", "scan", "--out", "", "--out"},
                      std::vector<std::string>{"--virtual", "snap", "--out", "", "--out"},
                      std::vector<std::string>{"--virtual", "list", "--log", "", "--log"},
                      std::vector<std::string>{"--virtual=", "list", "--virtual"},
                      std::vector<std::string>{"virtual", "new", "", "FILE"},
                      std::vector<std::string>{"--virtual", "profile", "save", "", "file"}));

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
