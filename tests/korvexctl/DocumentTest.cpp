#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "korvexctl/CommandLine.h"
#include "korvexctl/cli/Decimal.h"
#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/commands/Commands.h"
#include "korvexctl/settings/Settings.h"
#include "project/SourceTree.h"

namespace Korvex3Sync::tests {

namespace {

namespace fs = std::filesystem;
using korvexctl::Setting;
using ::testing::ElementsAreArray;

constexpr char kPage[] = "docs/korvexctl.md";

std::vector<std::string> Lines(const std::string& text) {
    std::istringstream stream(text);
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// The rows of the table that begins with this line, without its head.
std::vector<std::string> TableRows(const std::string& head) {
    const std::vector<std::string> lines = Lines(ReadProjectFile(kPage));
    auto row = std::find(lines.begin(), lines.end(), head);
    std::vector<std::string> rows;
    if (std::distance(row, lines.end()) < 2) {
        ADD_FAILURE() << "no table " << head;
        return rows;
    }
    for (row += 2; row != lines.end() && row->starts_with('|'); ++row) {
        rows.push_back(*row);
    }
    return rows;
}

std::string Range(const Setting& setting) {
    std::string range = RangeText(setting);
    const std::string unit = std::string(setting.unit) + ", ";
    return *setting.unit == 0 ? range : range.substr(unit.size());
}

TEST(KorvexctlDocument, HasEverySettingWithUnitAndRange) {
    std::vector<std::string> rows;
    for (const Setting& setting : korvexctl::AllSettings()) {
        if (setting.cameraOrder > 0) {
            continue;
        }
        std::string name = '`' + setting.name + '`';
        if (setting.cameraOrder == 0) {
            const std::string kind = setting.name.substr(0, setting.name.size() - 1);
            name += " to `" + kind + std::to_string(korvexctl::kCameraOrders - 1) + '`';
        }
        rows.push_back("| " + name + " | " + setting.unit + (*setting.unit == 0 ? "| " : " | ") +
                       Range(setting) + " | " + (setting.read ? "yes" : "no") + " | " +
                       setting.help + " |");
    }
    EXPECT_THAT(TableRows("| name | unit | range | readable | meaning |"), ElementsAreArray(rows));
}

TEST(KorvexctlDocument, HasEveryExitCode) {
    std::vector<std::string> rows;
    for (const std::string& line : Lines(korvexctl::ExitCodeTable())) {
        std::istringstream words(line);
        int code = 0;
        std::string meaning;
        if (words >> code >> std::ws && std::getline(words, meaning)) {
            rows.push_back("| " + std::to_string(code) + " | " + meaning + " |");
        }
    }
    EXPECT_GT(rows.size(), 15U) << "the codes were not found";
    std::vector<std::string> written = TableRows("| code | meaning |");
    for (std::string& row : written) {
        std::erase(row, '`');
    }
    EXPECT_EQ(written, rows);
}

/// A header or a page as one line, without the marks of comments.
std::string Flowing(const std::string& path) {
    std::string text = std::regex_replace(ReadProjectFile(path), std::regex("\n */{2,3}"), "\n");
    return std::regex_replace(text, std::regex("\\s+"), " ");
}

TEST(KorvexctlDocument, OtherPagesTellTheRangesOfTheSettings) {
    using korvexctl::Field;
    using ::testing::HasSubstr;
    const auto field = [](const char* setting, std::size_t index = 0) -> const Field& {
        return korvexctl::RequireSetting(setting).fields.at(index);
    };
    const auto range = [&](const char* setting, std::size_t index = 0) {
        const Field& of = field(setting, index);
        return korvexctl::RangeText(of.low, of.high);
    };
    for (const Setting& setting : korvexctl::AllSettings()) {
        const std::string unit = setting.unit;
        for (const Field& of : setting.fields) {
            if (unit == "percent" || unit == "us") {
                const Field& same =
                    field(unit == "us" ? "projector-work-time" : "projector-brightness");
                EXPECT_EQ(of.low, same.low) << setting.name;
                EXPECT_EQ(of.high, same.high) << setting.name;
            }
        }
    }

    const std::string light = Flowing("include/Korvex3Sync/Light.h");
    EXPECT_THAT(light, HasSubstr("korvexctl accepts " + range("projector-brightness") +
                                 " for brightness and duty ratios, " +
                                 range("projector-work-time") + " for work times and " +
                                 range("trigger-period") + " for the trigger period"));
    EXPECT_THAT(light, HasSubstr("level of the infrared laser, " + range("ir-laser-level")));
    EXPECT_THAT(light, HasSubstr("A type outside " + range("project")));
    EXPECT_THAT(light, HasSubstr("a route outside " + range("strobe") + " or a state outside " +
                                 range("strobe", 1)));
    EXPECT_THAT(
        light, HasSubstr("A state outside 1 to " + korvexctl::DecimalText(field("distance").high)));
    EXPECT_THAT(Flowing("include/Korvex3Sync/Images.h"),
                HasSubstr("`route` is outside " + range("strobe")));

    const Field& exposure = field("exposure.0");
    const std::string longest = korvexctl::DecimalText(exposure.high);
    const std::string cameras = Flowing("include/Korvex3Sync/Cameras.h");
    EXPECT_THAT(cameras, HasSubstr("milliseconds, " + range("exposure.0") + ", truncated"));
    EXPECT_THAT(cameras, HasSubstr("gain steps of the camera, " + range("gain.0") + ' '));
    const std::string guide = Flowing("docs/guide.md");
    EXPECT_THAT(guide, HasSubstr("in steps of 0.1 up to " + longest));
    EXPECT_THAT(guide, HasSubstr("`SetIRLaserBrightnessLevel` (" + range("ir-laser-level") + ')'));
    EXPECT_THAT(Flowing("docs/troubleshooting.md"),
                HasSubstr("an exposure above " + longest + " ms"));
}

/// Columns for every line of a help.
constexpr std::size_t kUnbroken = 10'000;

std::string HelpOf(std::vector<const char*> words) {
    words.insert(words.begin(), "korvexctl");
    words.push_back("--help");
    return korvexctl::ReadCommandLine(static_cast<int>(words.size()), words.data(), kUnbroken).text;
}

TEST(KorvexctlDocument, TellsTheNumbersOfTheHelp) {
    using ::testing::HasSubstr;
    EXPECT_THAT(HelpOf({"reconnect"}), HasSubstr("3 to 600 (default 30)"));
    EXPECT_THAT(HelpOf({"user-info"}), HasSubstr("16 pages (0 to 15) of 256 bytes"));
    EXPECT_THAT(HelpOf({"user-info", "read"}), HasSubstr("0 to 15"));
    const std::string page = Flowing(kPage);
    EXPECT_TRUE(std::regex_search(
        page, std::regex("`--timeout` seconds \\([^)]*\\b30\\b[^)]*, at least 3\\b")));
    EXPECT_THAT(page, HasSubstr("16 pages (0 to 15) of 256 bytes"));
}

/// Where a page shows a command line of the program: between backticks, or at the margin of an
/// indented block. What follows the options that stand before the command is the first match.
const std::regex kShown(
    "(?:`|\n    (?:\\$ )?)korvexctl(?: -[^ `\n]+(?: [A-Z]+)?)* "
    "([a-z][a-z-]*)");
/// The same, followed by what the command ends with.
const std::regex kEnds("`korvexctl ([a-z-]+)[^`]*` ends\\s+with\\s+(?:exit\\s+code\\s+)?([0-9]+)");

/// README and the pages, by path.
std::map<std::string, std::string> Pages() {
    std::map<std::string, std::string> pages{{"README.md", ReadProjectFile("README.md")}};
    for (const auto& entry : fs::directory_iterator(fs::path(KORVEX_SOURCE_DIR) / "docs")) {
        if (entry.path().extension() == ".md") {
            const std::string path = "docs/" + entry.path().filename().string();
            pages[path] = ReadProjectFile(path);
        }
    }
    return pages;
}

TEST(KorvexctlDocument, EveryCommandThatAPageShowsExists) {
    std::set<std::string> known;
    for (const korvexctl::Command& command : korvexctl::Commands()) {
        known.insert(command.name);
    }
    std::set<std::string> shown;
    for (const auto& [path, text] : Pages()) {
        for (std::sregex_iterator match(text.begin(), text.end(), kShown), end; match != end;
             ++match) {
            const std::string name = (*match)[1];
            shown.insert(name);
            EXPECT_TRUE(known.contains(name)) << path << ": korvexctl " << name;
        }
    }
    EXPECT_GT(shown.size(), 10U) << "the commands were not found";
}

TEST(KorvexctlDocument, TroubleshootingTellsTheCodesThatAreMeant) {
    using korvexctl::ExitCode;
    // Each is what the command ends with in its own tests.
    const std::map<std::string, ExitCode> meant{{"list", ExitCode::NoCamera},
                                                {"info", ExitCode::NotConnected},
                                                {"usb", ExitCode::NotOnUsb3},
                                                {"doctor", ExitCode::NotHealthy},
                                                {"selftest", ExitCode::SelftestFailed}};
    const std::string page = ReadProjectFile("docs/troubleshooting.md");
    std::set<std::string> told;
    for (std::sregex_iterator match(page.begin(), page.end(), kEnds), end; match != end; ++match) {
        const std::string name = (*match)[1];
        told.insert(name);
        const auto code = meant.find(name);
        ASSERT_NE(code, meant.end()) << (*match)[0];
        EXPECT_EQ(std::stoi((*match)[2]), static_cast<int>(code->second)) << (*match)[0];
    }
    EXPECT_EQ(told.size(), meant.size());
}

}  // namespace

}  // namespace Korvex3Sync::tests
