#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

#include "virtual_head/Request.h"
#include "virtual_head/TestFiles.h"
#include "virtual_head/VirtualHead.h"
#include "virtual_head/config/HeadFile.h"

namespace Korvex3Sync::tests {
namespace {

using namespace virtual_head;
using namespace std::chrono_literals;

class FaultKeysTest : public testing::Test {
protected:
    HeadDescription Good(const std::string& text) {
        WriteText(m_file, text);
        const auto read = ReadHeadFile(m_file);
        if (const auto* error = std::get_if<HeadFileError>(&read)) {
            ADD_FAILURE() << error->message;
            return {};
        }
        return std::get<HeadDescription>(read);
    }

    /// What is wrong in `line`.
    std::string Wrong(const std::string& text, int line) {
        WriteText(m_file, text);
        const auto read = ReadHeadFile(m_file);
        const auto* error = std::get_if<HeadFileError>(&read);
        if (error == nullptr) {
            ADD_FAILURE() << "was taken: " << text;
            return {};
        }
        const std::string place = m_file.string() + ":" + std::to_string(line) + ": ";
        EXPECT_THAT(error->message, testing::StartsWith(place));
        return error->message.substr(std::min(place.size(), error->message.size()));
    }

    /// The same for the lines of one fault, of which the first is line 2.
    std::string WrongFault(const std::string& lines, int line) {
        return Wrong("[[fault]]\n" + lines, line);
    }

    TemporaryFolder m_folder;
    std::filesystem::path m_file = m_folder.Path() / "head.toml";
};

TEST_F(FaultKeysTest, EveryKeyIsTakenOver) {
    const HeadDescription head = Good(R"(
[faults]
seed = 42

[[fault]]
what = "slow"
call = "SnapShot"
times = 3
extra_ms = 20
at_trigger = 0

[[fault]]
what = "board-mute"
for_ms = 500
opens = 2
at_ms = 1000

[[fault]]
what = "delay"
by_triggers = 4
chance = 0.25
at_trigger = 7
)");
    EXPECT_EQ(head.faultSeed, 42U);
    ASSERT_EQ(head.faults.size(), 3U);
    const TimedFault& slow = head.faults[0];
    EXPECT_EQ(slow.order.kind, FaultKind::Slow);
    EXPECT_EQ(slow.order.call, "SnapShot");
    EXPECT_EQ(slow.order.times, 3);
    EXPECT_EQ(slow.order.extra, 20ms);
    EXPECT_EQ(slow.atTrigger, 0U);
    EXPECT_FALSE(slow.at);
    EXPECT_FALSE(slow.chance);
    const TimedFault& mute = head.faults[1];
    EXPECT_EQ(mute.order.kind, FaultKind::BoardMute);
    EXPECT_EQ(mute.order.lasting, 500ms);
    EXPECT_EQ(mute.order.opens, 2);
    EXPECT_EQ(mute.at, 1000ms);
    const TimedFault& delay = head.faults[2];
    EXPECT_EQ(delay.order.byTriggers, 4);
    EXPECT_EQ(delay.order.times, 1);
    EXPECT_EQ(delay.chance, 0.25);
    EXPECT_EQ(delay.atTrigger, 7U);
}

TEST_F(FaultKeysTest, EveryNameIsTaken) {
    for (int number = 0; number <= static_cast<int>(FaultKind::SkipKeys); ++number) {
        const auto kind = static_cast<FaultKind>(number);
        std::string text = "[[fault]]\nwhat = \"" + std::string(Name(kind)) + "\"\nat_ms = 5\n";
        text += Takes(kind, FaultParameter::Call) ? "call = \"zr3DProject\"\n" : "";
        text += Takes(kind, FaultParameter::Extra) ? "extra_ms = 1\n" : "";
        const HeadDescription head = Good(text);
        ASSERT_EQ(head.faults.size(), 1U) << text;
        EXPECT_EQ(head.faults[0].order.kind, kind);
    }
}

TEST_F(FaultKeysTest, ExampleOfTheDocumentationIsTaken) {
    std::ifstream stream(KORVEX_SOURCE_DIR "/docs/virtual-head.md");
    const std::string page{std::istreambuf_iterator<char>(stream), {}};
    const std::string opening = "```toml\n";
    const std::size_t begin = page.rfind(opening);
    ASSERT_NE(begin, std::string::npos);
    const std::size_t text = begin + opening.size();
    const HeadDescription head = Good(page.substr(text, page.find("```", text) - text));
    EXPECT_EQ(head.faultSeed, 7U);
    EXPECT_EQ(head.faults.size(), 5U);
}

TEST_F(FaultKeysTest, EveryNameStandsInTheDocumentation) {
    std::ifstream stream(KORVEX_SOURCE_DIR "/docs/virtual-head.md");
    const std::string page{std::istreambuf_iterator<char>(stream), {}};
    for (int kind = 0; kind <= static_cast<int>(FaultKind::SkipKeys); ++kind) {
        EXPECT_THAT(
            page, testing::HasSubstr("`" + std::string(Name(static_cast<FaultKind>(kind))) + "`"));
    }
}

TEST_F(FaultKeysTest, NoFaultsAndTheFirstSeedAreTheDefault) {
    EXPECT_TRUE(Good("").faults.empty());
    EXPECT_EQ(Good("").faultSeed, 1U);
}

TEST_F(FaultKeysTest, UnknownNamesNameTheirLine) {
    const std::string at = "at_ms = 1\n";
    EXPECT_EQ(WrongFault(at + "what = \"lose-mon\"\n", 3),
              "[[fault]] what: there is no fault \"lose-mon\"; did you mean lose-mono");
    EXPECT_EQ(WrongFault(at + "what = \"fail\"\ncall = \"Snap\"\n", 4),
              "[[fault]] call: no platform function is called \"Snap\"; did you mean SnapShot");
    EXPECT_EQ(WrongFault("what = \"lose-mono\"\nat_trigge = 1\n", 3),
              "unknown key \"at_trigge\" in [[fault]]; did you mean at_trigger");
    EXPECT_EQ(Wrong("[faults]\nsede = 1\n", 2),
              "unknown key \"sede\" in [faults]; did you mean seed");
}

TEST_F(FaultKeysTest, WhatAKindHasNoUseForNamesItsLine) {
    EXPECT_EQ(WrongFault("what = \"lose-mono\"\nat_ms = 1\nfor_ms = 1\n", 4),
              "[[fault]] for_ms: lose-mono does not take it");
    EXPECT_EQ(WrongFault("what = \"board-vanish\"\nat_ms = 1\ntimes = 1\n", 4),
              "[[fault]] times: board-vanish does not take it");
    EXPECT_EQ(WrongFault("what = \"tear-mono\"\nat_ms = 1\ncall = \"SnapShot\"\n", 4),
              "[[fault]] call: tear-mono does not take it");
}

TEST_F(FaultKeysTest, ValuesOutOfRangeAndOfAWrongTypeNameTheirLine) {
    const std::string lose = "what = \"lose-mono\"\n";
    EXPECT_EQ(WrongFault(lose + "at_ms = 1\ntimes = 0\n", 4),
              "[[fault]] times: 0 is out of range, 1 to 1000000");
    EXPECT_EQ(WrongFault(lose + "at_ms = 1\ntimes = 1.0\n", 4),
              "[[fault]] times: a whole number is expected");
    EXPECT_EQ(WrongFault(lose + "at_ms = -1\n", 3),
              "[[fault]] at_ms: -1 is out of range, 0 to 86400000");
    EXPECT_EQ(WrongFault(lose + "at_trigger = -1\n", 3),
              "[[fault]] at_trigger: -1 is out of range, 0 to 1000000000");
    for (const char* chance : {"0", "1.5", "-0.1", "nan", "\"1\"", "true"}) {
        EXPECT_EQ(WrongFault(lose + "chance = " + chance + "\n", 3),
                  "[[fault]] chance: a number above 0 and at most 1 is expected");
    }
    EXPECT_EQ(WrongFault("what = 5\n", 2), "[[fault]] what: a text is expected");
    EXPECT_EQ(WrongFault("at_ms = 1\nwhat = \"fail\"\ncall = 5\n", 4),
              "[[fault]] call: a text is expected");
    EXPECT_EQ(Wrong("[faults]\nseed = -1\n", 2),
              "[faults] seed: a whole number of 0 or more is expected");
}

TEST_F(FaultKeysTest, WhatIsMissingNamesTheFault) {
    EXPECT_EQ(WrongFault("at_ms = 1\n", 1), "[[fault]] missing key \"what\"");
    EXPECT_EQ(WrongFault("what = \"lose-mono\"\n", 1),
              "[[fault]] missing key: give at_trigger, at_ms or chance");
    EXPECT_EQ(WrongFault("what = \"lose-mono\"\nat_ms = 1\nat_trigger = 1\n", 1),
              "[[fault]] at_trigger and at_ms exclude each other");
    EXPECT_EQ(WrongFault("what = \"fail\"\nat_ms = 1\n", 1), "[[fault]] missing key \"call\"");
    EXPECT_EQ(WrongFault("what = \"board-late\"\nat_ms = 1\n", 1),
              "[[fault]] missing key \"extra_ms\"");
    EXPECT_EQ(WrongFault("what = \"board-return\"\nat_trigger = 1\n", 1),
              "[[fault]] board-return needs at_ms: a head whose board is gone gives no triggers");
}

TEST_F(FaultKeysTest, TablesThatAreValuesAreRefused) {
    EXPECT_EQ(Wrong("fault = 5\n", 1), "[[fault]] an array of tables is expected");
    EXPECT_EQ(Wrong("fault = [5]\n", 1), "[[fault]] an array of tables is expected");
    EXPECT_EQ(Wrong("faults = 5\n", 1), "\"faults\" is not a table");
}

TEST_F(FaultKeysTest, ADescriptionIsCheckedAsAFileIs) {
    HeadDescription description;
    description.faults.emplace_back();
    description.faults.back().order.kind = FaultKind::LoseMono;
    std::string error;
    EXPECT_FALSE(RequestVirtualHead(description, error));
    EXPECT_EQ(error, "[[fault]] missing key: give at_trigger, at_ms or chance");
}

}  // namespace
}  // namespace Korvex3Sync::tests
