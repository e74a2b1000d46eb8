#include "korvexctl/head/HeadFileText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <variant>

#include "virtual_head/TestFiles.h"
#include "virtual_head/config/HeadFile.h"
#include "virtual_head/config/HeadRules.h"
#include "virtual_head/config/SceneRules.h"

namespace Korvex3Sync::tests {

namespace {

using virtual_head::HeadDescription;
using virtual_head::HeadFileError;

using ::testing::HasSubstr;

HeadDescription Read(const std::string& text) {
    const TemporaryFolder folder;
    const auto file = folder.Path() / "head.toml";
    WriteText(file, text);
    const auto read = virtual_head::ReadHeadFile(file);
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
    for (const std::string& line : LinesOf(korvexctl::HeadFileText())) {
        text += (IsExample(line) ? line.substr(1) : line) + '\n';
    }
    return text;
}

TEST(HeadFileText, IsTheDefaultHead) {
    const HeadDescription read = Read(korvexctl::HeadFileText());
    const HeadDescription defaults;
    for (const auto& rule : virtual_head::NumberRules()) {
        EXPECT_EQ(read.*rule.member, defaults.*rule.member) << rule.where.key;
    }
    for (const auto& rule : virtual_head::TextRules()) {
        EXPECT_EQ(read.*rule.member, defaults.*rule.member) << rule.where.key;
    }
    for (const auto& rule : virtual_head::SceneRules()) {
        for (std::size_t i = 0; i < rule.count; ++i) {
            EXPECT_EQ(SceneValue(read.scene, rule, i), SceneValue(defaults.scene, rule, i))
                << rule.key;
        }
    }
    EXPECT_EQ(read.faultSeed, defaults.faultSeed);
    EXPECT_TRUE(read.faults.empty());
    EXPECT_EQ(read.color, defaults.color);
    EXPECT_EQ(read.userMemory, defaults.userMemory);
    EXPECT_EQ(read.replayFolder, defaults.replayFolder);
}

TEST(HeadFileText, NamesEveryKeyThatHasADefault) {
    const std::string text = '\n' + korvexctl::HeadFileText();
    for (const auto& rule : virtual_head::NumberRules()) {
        EXPECT_THAT(text, HasSubstr(std::string("\n") + rule.where.key + " = "));
    }
    for (const auto& rule : virtual_head::TextRules()) {
        EXPECT_THAT(text, HasSubstr(std::string("\n") + rule.where.key + " = "));
    }
}

/// The lines that explain a key: those of prose right above it.
std::string ExplanationOf(const std::string& key) {
    std::string explanation;
    for (const std::string& line : LinesOf(korvexctl::HeadFileText())) {
        if (line.starts_with(key + " = ")) {
            return explanation;
        }
        explanation = IsProse(line) ? explanation + line : "";
    }
    return "";
}

std::string RangeText(double lowest, double highest) {
    std::ostringstream text;
    text << lowest << " to " << highest;
    return text.str();
}

TEST(HeadFileText, NamesEveryKeyOfTheSceneWithItsRange) {
    for (const auto& rule : virtual_head::SceneRules()) {
        EXPECT_THAT(ExplanationOf(rule.key), HasSubstr(", " + RangeText(rule.lowest, rule.highest)))
            << rule.key;
    }
}

TEST(HeadFileText, TheRangesAreThoseThatAreChecked) {
    const std::string text = korvexctl::HeadFileText();
    for (const auto& rule : virtual_head::NumberRules()) {
        if (std::string(rule.where.key) != "usb_speed") {  // its values are listed one by one
            EXPECT_THAT(text, HasSubstr(std::to_string(rule.lowest) + " to " +
                                        std::to_string(rule.highest)))
                << rule.where.key;
        }
    }
}

TEST(HeadFileText, TheExamplesReadOnceTheirMarkIsTakenAway) {
    const HeadDescription read = Read(WithExamples());
    EXPECT_EQ(std::string(read.userMemory.begin(), read.userMemory.begin() + 8),
              std::string("bench 7") + '\0');
    EXPECT_EQ(read.replayFolder.filename(), "pairs");
    EXPECT_EQ(read.faults.size(), 4U);
}

TEST(HeadFileText, EveryKeyIsExplained) {
    const auto lines = LinesOf(korvexctl::HeadFileText());
    ASSERT_TRUE(IsProse(lines.front()));
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const bool key = lines[i].find(" = ") != std::string::npos && !IsProse(lines[i]);
        if (key) {
            // A pair of keys shares one explanation.
            EXPECT_TRUE(IsProse(lines[i - 1]) || (i > 1 && IsProse(lines[i - 2]))) << lines[i];
        }
        EXPECT_LE(lines[i].size(), 100U) << lines[i];
    }
}

}  // namespace

}  // namespace Korvex3Sync::tests
