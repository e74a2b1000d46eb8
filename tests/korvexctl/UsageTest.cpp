#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "korvexctl/CommandLine.h"
#include "korvexctl/Korvexctl.h"
#include "korvexctl/cli/ExitCodes.h"
#include "support/CaseName.h"
#include "support/Pattern.h"
#include "support/Terminal.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr int kUsage = 2;

/// The words of a text with one blank between.
std::string Flowing(const std::string& text) {
    std::istringstream words(text);
    std::string flowing;
    for (std::string word; words >> word;) {
        flowing += word + ' ';
    }
    return flowing;
}

TEST(KorvexctlUsage, HelpNamesCommandsAndEveryExitCode) {
    const ChildResult help = RunKorvexctl({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    for (const char* word : {"list", "info", "scan", "--virtual", "--json", "--verbose", "--log"}) {
        EXPECT_THAT(help.output, HasSubstr(word));
    }
    EXPECT_THAT(Flowing(help.output), HasSubstr(Flowing(korvexctl::ExitCodeTable())));
    EXPECT_THAT(help.error, IsEmpty());
}

std::size_t Count(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

/// The names of the commands that a help lists.
std::vector<std::string> ListedCommands(const std::string& help) {
    const std::string title = "\nCommands:\n";
    const auto begin = help.find(title);
    std::vector<std::string> names;
    if (begin != std::string::npos) {
        std::istringstream lines(help.substr(begin + title.size()));
        for (std::string line; std::getline(lines, line) && !line.empty();) {
            // A line with more indentation continues the line before.
            if (line.starts_with("  ") && line[2] != ' ') {
                names.push_back(line.substr(2, line.find(' ', 2) - 2));
            }
        }
    }
    return names;
}

/// Looks at the help of this command and of all below it. Returns how many these are.
int ExpectWholeHelp(const std::vector<std::string>& command) {
    std::vector<std::string> words = command;
    words.insert(words.begin(), "korvexctl");
    words.push_back("--help");
    std::vector<const char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(word.c_str());
    }
    const std::string help =
        korvexctl::ReadCommandLine(static_cast<int>(arguments.size()), arguments.data()).text;
    const std::string name = ::testing::PrintToString(command);
    for (const char* once : {"\nGlobal options", "\n  --virtual[", "\n  --json ",
                             "\n  -v, --verbose ", "\n  --log "}) {
        EXPECT_EQ(Count(help, once), 1U) << name << ": " << once;
    }
    EXPECT_EQ(Count(Flowing(help), Flowing(korvexctl::ExitCodeTable())), 1U) << name;
    std::istringstream lines(help);
    for (std::string line; std::getline(lines, line);) {
        EXPECT_LE(line.size(), korvexctl::kUsualWidth) << name << ": " << line;
    }
    int commands = 1;
    for (const std::string& below : ListedCommands(help)) {
        std::vector<std::string> longer = command;
        longer.push_back(below);
        commands += ExpectWholeHelp(longer);
    }
    return commands;
}

TEST(KorvexctlUsage, EveryHelpHasTheGlobalOptionsAndTheExitCodesOnce) {
    // korvexctl itself, its commands, and those below profile, user-info, service and virtual.
    constexpr int kBelow = 3 + 2 + 4 + 1;
    EXPECT_EQ(ExpectWholeHelp({}), 1 + static_cast<int>(korvexctl::Commands().size()) + kBelow);
}

TEST(KorvexctlUsage, HelpOfScanNamesTheUnitOfEachOption) {
    const std::string help = Flowing(RunKorvexctl({"scan", "--help"}).output);
    for (const char* line :
         {"--period MS", "--laser-duty PERCENT", "--brightness PERCENT", "--projector-duty PERCENT",
          "--strobe-duty PERCENT", "--timeout S", "--sets N", "--keep K", "--out DIR",
          "--mode MODE", "--exposure MS", "--gain STEPS", "--profile FILE",
          "in milliseconds, 1 to 10000 (default: as it is on the head)",
          "seconds, 0.1 to 86400 (default 5, with --reconnect 60)", "a number without unit"}) {
        EXPECT_THAT(help, HasSubstr(line));
    }
}

TEST(KorvexctlUsage, VersionIsPrinted) {
    EXPECT_THAT(RunKorvexctl({"--version"}).output, MatchesPattern("korvexctl [0-9.]+\n"));
}

TEST(KorvexctlUsage, VersionIsADocumentWhenOneIsAskedFor) {
    for (const auto& words : {std::vector<std::string>{"--version", "--json"},
                              std::vector<std::string>{"--json", "--version"}}) {
        const ChildResult result = RunKorvexctl(words);
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_THAT(ParseJson(result.output)["version"].get<std::string>(),
                    MatchesPattern("[0-9.]+"));
    }
}

struct Wrong {
    std::vector<std::string> words;
    const char* message;
};

class WrongWords : public ::testing::TestWithParam<Wrong> {};

TEST_P(WrongWords, AreNamedWithWhatComesNear) {
    EXPECT_EQ(RunKorvexctl(GetParam().words).error,
              "korvexctl: " + std::string(GetParam().message) + " (see --help)\n");
}

INSTANTIATE_TEST_SUITE_P(
    CommandLines, WrongWords,
    ::testing::Values(
        Wrong{{"sacn"}, "unknown command \"sacn\"; did you mean scan"},
        Wrong{{"--virtual", "zebra", "--json"}, "unknown command \"zebra\""},
        Wrong{{"profile", "laod", "x"}, "unknown command \"laod\"; did you mean load"},
        Wrong{{"profile"}, "missing command, one of save, load, diff"},
        Wrong{{"list", "info"}, "unexpected argument \"info\""},
        Wrong{{"scan", "--stes", "3"}, "unknown option --stes; did you mean --sets"},
        Wrong{{"scan", "--stes=3"}, "unknown option --stes; did you mean --sets"},
        Wrong{{"list", "--jsn"}, "unknown option --jsn; did you mean --json"},
        Wrong{{"--sets", "3", "scan"}, "--sets is an option of scan and must follow that word"},
        Wrong{{"--sets=3", "scan"}, "--sets is an option of scan and must follow that word"},
        Wrong{{"user-info", "--hex", "read", "3"},
              "--hex is an option of read and must follow that word"},
        Wrong{{"list", "--sets", "3"}, "unknown option --sets"},
        Wrong{{"list", "--", "--type"}, "unexpected argument \"--type\""},
        Wrong{{"user-info", "read"}, "missing argument PAGE"},
        Wrong{{"set"}, "missing argument NAME VALUE..."},
        Wrong{{"scan", "--sets"}, "missing value: --sets N"},
        Wrong{{"scan", "--sets="}, "missing value: --sets N"},
        Wrong{{"scan", "--sets", "3", "--sets", "4"}, "--sets takes 1 value, not 2"},
        Wrong{{"snap", "--exposure", "1", "2"}, "--exposure takes 1 value, not 2"},
        Wrong{{"snap-ir", "--gain", "1"}, "missing value: --gain VALUE VALUE"},
        Wrong{{"list", "--json=3"}, "--json takes no value"},
        Wrong{{"reset"}, "missing option, one of --fpga, --device"},
        Wrong{{"reset", "--fpga", "--device"}, "only one of --fpga, --device can be given"},
        Wrong{{"help", "sacn"}, "unknown command \"sacn\"; did you mean scan"},
        Wrong{{"help", "profile", "laod"}, "unknown command \"laod\"; did you mean load"},
        Wrong{{"help", "--man", "--bash-completion"},
              "--man and --bash-completion exclude each other"},
        Wrong{{"--virtual", "bench.toml", "scan"},
              "unexpected argument \"bench.toml\"; did you mean --virtual=bench.toml"},
        Wrong{{"--virtual", "bench.toml"},
              "unknown command \"bench.toml\"; did you mean --virtual=bench.toml"},
        Wrong{{"list", "--virtual", "./bench"},
              "unexpected argument \"./bench\"; did you mean --virtual=./bench"},
        Wrong{{"--virtual", "sacn"}, "unknown command \"sacn\"; did you mean scan"},
        Wrong{{"set", "exposure", "5"}, "unknown setting \"exposure\"; did you mean exposure.0"},
        Wrong{{"set", "exposur.1", "5"}, "unknown setting \"exposur.1\"; did you mean exposure.1"},
        Wrong{{"scan", "--mode", "lasr"},
              "--mode: \"lasr\" is not one of laser, pattern, pattern-color, laser-color; did you "
              "mean laser"},
        // Also a number that stands for a mode in the library.
        Wrong{{"status", "--mode", "4"},
              "--mode: \"4\" is not one of laser, pattern, pattern-color, laser-color"},
        Wrong{{"--virtual=", "list"}, "--virtual=: missing head file name"},
        Wrong{{"list", "--virtual="}, "--virtual=: missing head file name"}),
    [](const auto& row) { return support::CaseName(row.param.words); });

class BadUsage : public ::testing::TestWithParam<std::vector<std::string>> {};

TEST_P(BadUsage, IsRefusedWithOneLine) {
    const ChildResult result = RunKorvexctl(GetParam());
    EXPECT_EQ(result.exitCode, kUsage);
    EXPECT_THAT(result.output, IsEmpty());
    EXPECT_THAT(result.error, MatchesPattern("korvexctl: [^\n]+--help[^\n]*\n"));
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
                      std::vector<std::string>{"--virtual", "head.toml", "list"}),
    [](const auto& row) { return support::CaseName(row.param); });

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

TEST(KorvexctlUsage, ATerminalShowsWordsInTheirOwnLetters) {
    const std::string word = "k\xC3\xB6pfe";
    const ChildResult result = RunChild(OnTerminal(KorvexctlCommand({word})));
    EXPECT_EQ(result.exitCode, kUsage);
    EXPECT_THAT(result.output, HasSubstr("korvexctl: unknown command \"" + word + "\""));
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

class EmptyName : public ::testing::TestWithParam<std::vector<std::string>> {};

TEST_P(EmptyName, IsRefusedWithItsOption) {
    std::vector<std::string> arguments = GetParam();
    const std::string option = arguments.back();
    arguments.pop_back();
    const ChildResult result = RunKorvexctl(arguments);
    EXPECT_EQ(result.exitCode, kUsage);
    EXPECT_THAT(result.error, HasSubstr("korvexctl: " + option + ": the name is empty"));
}

// The last entry is the name that the message must contain.
INSTANTIATE_TEST_SUITE_P(
    CommandLines, EmptyName,
    ::testing::Values(std::vector<std::string>{"--virtual", "scan", "--out", "", "--out"},
                      std::vector<std::string>{"--virtual", "snap", "--out", "", "--out"},
                      std::vector<std::string>{"--virtual", "list", "--log", "", "--log"},
                      std::vector<std::string>{"virtual", "new", "", "FILE"},
                      std::vector<std::string>{"--virtual", "profile", "save", "", "file"}),
    [](const auto& row) { return support::CaseName(row.param); });

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
