#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "korvexctl/CommandLine.h"
#include "korvexctl/Korvexctl.h"
#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/settings/Settings.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

std::string HelpOfScan(std::size_t width) {
    const char* const words[] = {"korvexctl", "scan", "--help"};
    return korvexctl::ReadCommandLine(3, words, width).text;
}

TEST(KorvexctlHelp, FillsTheWidthOfTheTerminalAndNoMore) {
    for (const std::size_t width : {60U, 80U, 132U}) {
        std::istringstream lines(HelpOfScan(width));
        std::size_t longest = 0;
        for (std::string line; std::getline(lines, line);) {
            longest = std::max(longest, line.size());
        }
        EXPECT_LE(longest, width);
        EXPECT_GT(longest, width - 20);
    }
}

TEST(KorvexctlHelp, OfACommandIsThatOfItsOption) {
    for (const auto& command :
         {std::vector<std::string>{}, {"scan"}, {"profile"}, {"user-info", "write"}}) {
        std::vector<std::string> help{"help"};
        help.insert(help.end(), command.begin(), command.end());
        std::vector<std::string> option = command;
        option.push_back("--help");
        const ChildResult shown = RunKorvexctl(help);
        EXPECT_EQ(shown.exitCode, 0);
        EXPECT_EQ(shown.output, RunKorvexctl(option).output);
    }
}

TEST(KorvexctlHelp, IsADocumentWhenOneIsAskedFor) {
    const ChildResult result = RunKorvexctl({"help", "list", "--json"});
    EXPECT_THAT(ParseJson(result.output)["text"].get<std::string>(),
                HasSubstr("Usage: korvexctl list"));
}

/// A text without the marks of roff.
std::string WithoutRoff(std::string text) {
    for (const char* mark : {"\\-", "\\e", "\\&"}) {
        for (auto at = text.find(mark); at != std::string::npos; at = text.find(mark, at)) {
            text.replace(at, 2, mark == std::string("\\-") ? "-" : "");
        }
    }
    return text;
}

TEST(KorvexctlManPage, HasCommandsOptionsSettingsAndExitCodes) {
    const std::string page = RunKorvexctl({"help", "--man"}).output;
    EXPECT_THAT(page, HasSubstr(".TH KORVEXCTL 1 "));
    EXPECT_THAT(page, HasSubstr(".B \\-\\-log FILE\n")) << "hyphens as they are typed";
    const std::string text = WithoutRoff(page);
    for (const char* usage :
         {"scan [OPTIONS]", "profile load [OPTIONS] FILE", "virtual new [OPTIONS] FILE",
          "user-info write [OPTIONS] PAGE DATA", "snap-ir [OPTIONS]"}) {
        EXPECT_THAT(text, HasSubstr(std::string("\n.SS korvexctl ") + usage + '\n'));
    }
    for (const char* option : {"--virtual[=HEADFILE]", "--log FILE", "--fpga", "--mode MODE"}) {
        EXPECT_THAT(text, HasSubstr(std::string(".B ") + option + '\n'));
    }
    for (const korvexctl::Setting& setting : korvexctl::AllSettings()) {
        EXPECT_THAT(text, HasSubstr(".B " + setting.name + ": ")) << "once, in the first table";
    }
    for (const korvexctl::ExitCodeMeaning& row : korvexctl::ExitCodeMeanings()) {
        EXPECT_THAT(text, HasSubstr(".B " + std::to_string(static_cast<int>(row.code)) + "\n" +
                                    std::string(row.meaning)));
    }
    // Each line that begins with a dot is a request that was meant.
    std::istringstream lines(page);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('.')) {
            EXPECT_THAT(
                (std::vector<std::string>{".TH", ".SH", ".SS", ".TP", ".PP", ".B", ".\\\""}),
                Contains(line.substr(0, line.find(' '))));
        }
    }
}

class KorvexctlCompletion : public ::testing::Test {
protected:
    KorvexctlCompletion() {
        const ChildResult script = RunKorvexctl({"help", "--bash-completion"});
        EXPECT_EQ(script.exitCode, 0);
        WriteText(m_script, script.output);
        WriteText(m_folder.Path() / "head.toml", "");
        std::filesystem::create_directory(m_folder.Path() / "hello");
    }

    /// What bash offers at the end of this command line, which it has split into words.
    std::vector<std::string> Offered(const std::vector<std::string>& words) const {
        std::string line =
            "cd '" + m_folder.Path().string() + "'; . ./script; COMP_WORDS=(korvexctl";
        for (const std::string& word : words) {
            line += " '" + word + "'";
        }
        line += "); COMP_CWORD=" + std::to_string(words.size()) +
                "; _korvexctl; [ ${#COMPREPLY[@]} -eq 0 ] || printf '%s\\n' \"${COMPREPLY[@]}\"";
        const ChildResult bash = RunChild({"bash", "-c", line});
        EXPECT_THAT(bash.error, IsEmpty());
        std::istringstream lines(bash.output);
        std::vector<std::string> offered;
        for (std::string offer; std::getline(lines, offer);) {
            offered.push_back(offer);
        }
        return offered;
    }

    TemporaryFolder m_folder;
    const std::filesystem::path m_script = m_folder.Path() / "script";
};

TEST_F(KorvexctlCompletion, KnowsCommandsAndOptions) {
    EXPECT_THAT(Offered({"sc"}), ElementsAre("scan"));
    EXPECT_THAT(Offered({"--virtual", "doc"}), ElementsAre("doctor"));
    EXPECT_THAT(Offered({"profile", ""}),
                AllOf(Contains("save"), Contains("load"), Contains("diff")));
    EXPECT_THAT(Offered({"profile", "l"}), ElementsAre("load"));
    EXPECT_THAT(Offered({"scan", "--per"}), ElementsAre("--period"));
    EXPECT_THAT(Offered({"list", "--per"}), IsEmpty());
    EXPECT_THAT(Offered({"reset", "--f"}), ElementsAre("--fpga"));
    EXPECT_THAT(Offered({"list", "--js"}), ElementsAre("--json"));
}

TEST_F(KorvexctlCompletion, KnowsValues) {
    EXPECT_THAT(Offered({"scan", "--mode", "laser-"}), ElementsAre("laser-color"));
    EXPECT_THAT(Offered({"get", "blue"}), ElementsAre("blue-laser"));
    EXPECT_THAT(Offered({"set", "gain.0", "3", "trigger-m"}), ElementsAre("trigger-mode"));
    EXPECT_THAT(Offered({"help", "sel"}), ElementsAre("selftest"));
    EXPECT_THAT(Offered({"scan", "--sets", ""}), IsEmpty()) << "a number is made up";
}

TEST_F(KorvexctlCompletion, KnowsFilesAndFolders) {
    EXPECT_THAT(Offered({"scan", "--out", "he"}), ElementsAre("hello"));
    EXPECT_THAT(Offered({"profile", "load", "he"}),
                AllOf(Contains("head.toml"), Contains("hello")));
    // bash splits at the equals sign.
    EXPECT_THAT(Offered({"--virtual", "=", "head"}), ElementsAre("head.toml"));
    EXPECT_THAT(Offered({"--virtual", "="}), Contains("head.toml"));
    EXPECT_THAT(Offered({"--virtual", "head"}), Not(Contains("head.toml")));
}

}  // namespace

}  // namespace Korvex3Sync::tests
