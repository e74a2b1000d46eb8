#include "virtual_head/config/HeadFileText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "virtual_head/config/HeadFile.h"
#include "virtual_head/config/HeadRules.h"

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;

using ::testing::HasSubstr;

HeadDescription Read(const std::string& text) {
    const auto read = ParseHeadFile(text, "/folder/head.toml");
    if (const auto* error = std::get_if<HeadFileError>(&read)) {
        ADD_FAILURE() << error->message;
        return {};
    }
    return std::get<HeadDescription>(read);
}

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

bool IsProse(const std::string& line) {
    return line == "#" || line.starts_with("# ");
}

bool IsExample(const std::string& line) {
    return line.starts_with('#') && !IsProse(line);
}

std::string WithExamples() {
    std::string text;
    for (const std::string& line : LinesOf(HeadFileText())) {
        text += (IsExample(line) ? line.substr(1) : line) + '\n';
    }
    return text;
}

TEST(HeadFileText, IsTheDefaultHead) {
    const HeadDescription read = Read(HeadFileText());
    const HeadDescription defaults;
    for (const KeyRule& rule : KeyRules()) {
        EXPECT_EQ(ValueText(rule, read), ValueText(rule, defaults)) << KeyText(rule);
    }
    EXPECT_EQ(read.scene, defaults.scene);
    EXPECT_EQ(read.faultSeed, defaults.faultSeed);
    EXPECT_TRUE(read.faults.empty());
    EXPECT_EQ(read.userMemory, defaults.userMemory);
    EXPECT_EQ(read.replayFolder, defaults.replayFolder);
}

/// The lines that explain a key of a table, joined with blanks: those of prose right above it.
std::string ExplanationOf(const std::string& table, const std::string& key) {
    std::string explanation;
    bool inTable = false;
    for (const std::string& line : LinesOf(WithExamples())) {
        if (line.starts_with('[')) {
            inTable = line == '[' + table + ']';
        } else if (inTable && line.starts_with(key + " = ")) {
            return explanation;
        }
        explanation = IsProse(line) ? explanation + line.substr(1) : "";
    }
    return "";
}

TEST(HeadFileText, SaysOfEveryKeyWhatItMeansAndWhatItTakes) {
    for (const KeyRule& rule : KeyRules()) {
        EXPECT_EQ(ExplanationOf(rule.table, rule.key),
                  ' ' + std::string(rule.meaning) + " (" + ValuesText(rule) + ").")
            << KeyText(rule);
    }
}

TEST(HeadFileText, SaysTheRangesOfEveryNumberOfAFault) {
    std::string text;
    for (const std::string& line : LinesOf(HeadFileText())) {
        text += IsProse(line) ? line.substr(1) : "";
    }
    for (const FaultNumber& number : FaultNumbers()) {
        EXPECT_THAT(text, HasSubstr(std::string(number.meaning).substr(1)));
        EXPECT_THAT(text, HasSubstr('(' + std::to_string(number.lowest) + " to " +
                                    std::to_string(number.highest) + ')'))
            << number.key;
    }
}

TEST(HeadFileText, ShowsAKeyAsItIsChecked) {
    EXPECT_THAT(HeadFileText(),
                HasSubstr("# Width of one image; width times height is a multiple of 4 (pixels, 16 "
                          "to 2000).\nwidth = 1280\n# Height of one image (pixels, 16 to 2000).\n"
                          "height = 1024\n"));
    EXPECT_THAT(HeadFileText(), HasSubstr("(2 to 64 characters that begin with KV).\n"
                                          "type = \"KV00\"\n"));
    EXPECT_THAT(HeadFileText(), HasSubstr("sphere_center = [-34, -14, -18]\n"));
}

TEST(HeadFileText, TheExamplesReadOnceTheirMarkIsTakenAway) {
    const HeadDescription read = Read(WithExamples());
    EXPECT_EQ(std::string(read.userMemory.begin(), read.userMemory.begin() + 8),
              std::string("bench 7") + '\0');
    EXPECT_EQ(read.replayFolder, "/folder/pairs");
    ASSERT_EQ(read.faults.size(), 4U);
    EXPECT_EQ(Text(read.faults[0]), "lose-color, times 2, at_trigger 100, chance 0.01");
    EXPECT_EQ(Text(read.faults[1]),
              "slow zr3DQueryCurrentStatus, times 3, extra_ms 200, at_ms 10000");
    EXPECT_EQ(Text(read.faults[2]), "board-mute, for_ms 2000, opens 1, at_ms 20000");
    EXPECT_EQ(Text(read.faults[3]), "delay, times 1, by_triggers 2, at_trigger 500");
}

TEST(HeadFileText, EveryKeyIsExplainedOnShortLines) {
    const auto lines = LinesOf(HeadFileText());
    ASSERT_TRUE(IsProse(lines.front()));
    bool explained = false;
    std::vector<std::string> seen;
    for (const std::string& line : lines) {
        if (!IsProse(line) && line.find(" = ") != std::string::npos) {
            const std::string key = line.substr(line.starts_with('#') ? 1 : 0, line.find(" = "));
            // A key of a fault is explained where it appears first.
            if (std::find(seen.begin(), seen.end(), key) == seen.end()) {
                EXPECT_TRUE(explained) << line;
            }
            seen.push_back(key);
        }
        explained = IsProse(line);
        EXPECT_LE(line.size(), 100U) << line;
    }
    EXPECT_GT(seen.size(), KeyRules().size());
}

}  // namespace
}  // namespace Korvex3Sync::tests
