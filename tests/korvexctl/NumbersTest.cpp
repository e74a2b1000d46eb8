#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "korvexctl/CommandLine.h"
#include "korvexctl/CommandOverHead.h"
#include "korvexctl/cli/Decimal.h"
#include "virtual_head/TestFiles.h"

namespace Korvex3Sync::tests {

namespace {

using korvexctl::ExitCode;
using korvexctl::ReadDecimal;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

TEST(Decimal, ALeadingZeroIsNoBase) {
    EXPECT_EQ(ReadDecimal<int>("010"), 10);
    EXPECT_EQ(ReadDecimal<int>("-08"), -8);
    EXPECT_EQ(ReadDecimal<double>("010.50"), 10.5);
}

TEST(Decimal, AnythingButDigitsIsNoNumber) {
    for (const char* text : {"", " 5", "5 ", "+5", "0x10", "1e1", "5x", "--5", "1,5"}) {
        EXPECT_EQ(ReadDecimal<int>(text), std::nullopt) << text;
        EXPECT_EQ(ReadDecimal<double>(text), std::nullopt) << text;
    }
    EXPECT_EQ(ReadDecimal<int>("5.0"), std::nullopt);
    EXPECT_EQ(ReadDecimal<int>("99999999999999999999"), std::nullopt);
}

TEST(Decimal, NumbersAreWrittenWithoutExponent) {
    EXPECT_EQ(korvexctl::DecimalText(1e7), "10000000");
    EXPECT_EQ(korvexctl::DecimalText(0.1), "0.1");
    EXPECT_EQ(korvexctl::RangeText(0, 15), "0 to 15");
}

class Numbers : public ::testing::Test {
protected:
    RequestedHead m_head{SmallHeadDescription()};
};

TEST_F(Numbers, APageWithALeadingZeroIsThatPage) {
    ASSERT_EQ(RunHere({"user-info", "write", "8", "precious"}).code, ExitCode::Done);
    const CommandResult written = RunHere({"user-info", "write", "010", "bench"});
    EXPECT_EQ(written.code, ExitCode::Done) << written.message;
    EXPECT_EQ(written.output, "page 10: bench\n");
    EXPECT_EQ(RunHere({"user-info", "read", "08"}).output, "page 8: precious\n");
    EXPECT_EQ(RunHere({"user-info", "read", "10"}).output, "page 10: bench\n");
}

TEST_F(Numbers, AScanWithALeadingZeroTakesSoManySets) {
    const CommandResult result =
        RunHere({"scan", "--sets", "010", "--period", "020", "--laser-duty", "050"});
    ASSERT_EQ(result.code, ExitCode::Done) << result.message;
    EXPECT_EQ(result.figures["sets"]["asked"], 10);
    EXPECT_EQ(result.figures["settings"]["given"],
              (nlohmann::json{{"laser-line-duty", 50}, {"trigger-period", 20}}));
}

TEST_F(Numbers, ASnapWithLeadingZerosHasTheseValues) {
    const TemporaryFolder folder;
    const CommandResult result = RunHere({"snap", "--camera", "01", "--exposure", "08.50", "--gain",
                                          "010", "--route", "00", "--out", folder.Path().string()});
    ASSERT_EQ(result.code, ExitCode::Done) << result.message;
    EXPECT_EQ(result.figures["images"][1]["exposure_ms"], 8.5);
    EXPECT_EQ(result.figures["images"][1]["gain"], 10);
}

TEST_F(Numbers, ASettingWithALeadingZeroIsDecimalToo) {
    EXPECT_EQ(RunHere({"set", "laser-line-duty", "010"}).code, ExitCode::Done);
    EXPECT_THAT(BoardChanges(*m_head), ElementsAre("zr3DSetDutioRatio(49, 10) = true"));
}

std::string Refusal(std::vector<const char*> words) {
    words.insert(words.begin(), "korvexctl");
    const auto result = korvexctl::ReadCommandLine(static_cast<int>(words.size()), words.data());
    EXPECT_TRUE(result.badUsage);
    EXPECT_FALSE(result.run);
    return result.text;
}

TEST(NumberOptions, RefuseWhatIsNoDecimalNumberAndNameItWithTheRange) {
    for (const char* text : {"0x10", "1e3", "+5", " 5 ", "5.0", "", "1000001", "0"}) {
        EXPECT_EQ(Refusal({"scan", "--sets", text}),
                  "--sets: \"" + std::string(text) +
                      "\" is not a whole number from 1 to 1000000 (see --help)");
    }
    for (const char* text : {"0x10", "1e1", "+5", " 5 ", "nan", "inf", "10000000.1"}) {
        EXPECT_EQ(Refusal({"status", "--seconds", text}),
                  "--seconds: \"" + std::string(text) +
                      "\" is not a number from 0.1 to 10000000 (see --help)");
    }
    for (const char* text : {"0x1", "1e1", "+1", "16"}) {
        EXPECT_EQ(
            Refusal({"user-info", "read", text}),
            "page: \"" + std::string(text) + "\" is not a whole number from 0 to 15 (see --help)");
    }
}

TEST(NumberOptions, RangesInTheHelpHaveNoExponents) {
    const std::string help = RunKorvexctl({"status", "--help"}).output;
    EXPECT_THAT(help, HasSubstr("0.1 to 10000000"));
    EXPECT_THAT(help, HasSubstr("(default: at Ctrl-C)"));
    EXPECT_THAT(help, Not(HasSubstr("e+")));
}

}  // namespace

}  // namespace Korvex3Sync::tests
