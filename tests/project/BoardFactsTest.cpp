#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>

#include "platform/include/BoardFacts.h"
#include "project/SourceTree.h"

namespace Korvex3Sync::tests {

namespace {

const std::string kVendor = hardware::HexText(hardware::kBoardVendor).data();
const std::string kProduct = hardware::HexText(hardware::kBoardProduct).data();

TEST(BoardFacts, TheIdentifiersAreTheOnesOfTheDocument) {
    EXPECT_NE(ReadProjectFile("docs/board-protocol.md")
                  .find("USB device `" + kVendor + ":" + kProduct + "`"),
              std::string::npos);
}

/// The identifiers that udev rules in a text name, as "idVendor 3267".
std::set<std::string> RuleIdentifiers(const std::string& text) {
    static const std::regex kMatch(R"re((idVendor|idProduct)\}==\\?"([^"\\]*)\\?")re");
    std::set<std::string> found;
    for (std::sregex_iterator match(text.begin(), text.end(), kMatch), end; match != end; ++match) {
        found.insert((*match)[1].str() + ' ' + (*match)[2].str());
    }
    return found;
}

TEST(BoardFacts, EveryUdevRuleNamesTheBoard) {
    const std::set<std::string> board{"idVendor " + kVendor, "idProduct " + kProduct};
    EXPECT_EQ(RuleIdentifiers("ATTRS{idVendor}==\"3267\", ATTR{idProduct}==\"5752\""), board);
    EXPECT_EQ(RuleIdentifiers(ReadProjectFile("packaging/70-korvex3sync.rules")), board);
}

TEST(BoardFacts, KorvexctlLooksForTheBoard) {
    // The program may not include the platform headers.
    const std::string text = ReadProjectFile("programs/korvexctl/head/UsbBoards.cpp");
    EXPECT_NE(text.find("kVendor = \"" + kVendor + '"'), std::string::npos);
    EXPECT_NE(text.find("kProduct = \"" + kProduct + '"'), std::string::npos);
}

TEST(BoardFacts, EveryTriggerModeIsWhatTheBoardDoes) {
    using hardware::TriggerRun;
    struct Row {
        int mode;
        TriggerRun run;
        bool color;
        bool lines;
        bool pattern;
    };
    for (const Row& row : {Row{0, TriggerRun::Off, false, false, false},
                           Row{1, TriggerRun::Running, false, true, false},
                           Row{2, TriggerRun::Running, false, false, true},
                           Row{3, TriggerRun::Running, true, false, true},
                           Row{4, TriggerRun::Single, false, false, false},
                           Row{5, TriggerRun::Off, false, false, false},
                           Row{6, TriggerRun::Running, true, true, false},
                           Row{7, TriggerRun::Off, false, false, false},
                           Row{-1, TriggerRun::Off, false, false, false}}) {
        EXPECT_EQ(hardware::RunOf(row.mode), row.run) << row.mode;
        EXPECT_EQ(hardware::AddsColor(row.mode), row.color) << row.mode;
        EXPECT_EQ(hardware::ShowsLines(row.mode), row.lines) << row.mode;
        EXPECT_EQ(hardware::ShowsPattern(row.mode), row.pattern) << row.mode;
    }
}

}  // namespace

}  // namespace Korvex3Sync::tests
