#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "platform/board/BoardLink.h"
#include "platform/board/protocol/Codec.h"
#include "platform/include/BoardFacts.h"
#include "support/Text.h"

namespace Korvex3Sync::tests {
namespace {

using namespace board;
using testing::HasSubstr;

std::string Document() {
    std::ifstream file(BOARD_PROTOCOL_DOCUMENT);
    EXPECT_TRUE(file.is_open()) << BOARD_PROTOCOL_DOCUMENT;
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::string Printed(const char* format, unsigned number) {
    char text[32];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

std::string Dump(const Report& report) {
    std::string text = "```\n";
    for (std::size_t place = 0; place < report.size(); ++place) {
        text += Printed("%02X", report[place]) + (place % 16 == 15 ? "\n" : " ");
    }
    return text + "```\n";
}

Payload Values(std::vector<std::int32_t> values) {
    return ValuesPayload(values);
}

TEST(BoardProtocolDocument, NamesEveryCommandWithItsCodeAndFunction) {
    const std::string document = Document();
    for (const CommandInfo& info : AllCommands()) {
        const auto code = static_cast<unsigned>(info.command);
        EXPECT_THAT(document, HasSubstr("| " + Printed("%u", code) + " (" + Printed("%02X", code) +
                                        ") | `" + info.function + "`"));
    }
    EXPECT_EQ(Count(document, ") | `zr3D"), AllCommands().size())
        << "and no command that does not exist";
}

TEST(BoardProtocolDocument, ShowsReportsOfTheRealEncoder) {
    const std::string document = Document();
    for (const Report& report :
         {EncodeCommand({Command::SetLaserEnable, 1, Values({1, 2})}),
          EncodeReply({Command::SetLaserEnable, 1, Status::Ok, {}}),
          EncodeCommand({Command::QueryLaserLineDuty, 2, {}}),
          EncodeReply({Command::QueryLaserLineDuty, 2, Status::Ok, Values({60})})}) {
        EXPECT_THAT(document, HasSubstr(Dump(report)));
    }
    EXPECT_EQ(Count(document, "\n4B 33 "), 4U);
}

TEST(BoardProtocolDocument, GivesTheLimitsAndTheIdentifiers) {
    const std::string document = Document();
    EXPECT_THAT(document, HasSubstr(std::to_string(kReplyLimit.count()) + " ms after the sending"));
    EXPECT_THAT(document, HasSubstr("`" + Printed("%04x", hardware::kBoardVendor) + ":" +
                                    Printed("%04x", hardware::kBoardProduct) + "`"));
    EXPECT_THAT(document, HasSubstr(std::to_string(kUserPages) + " pages of " +
                                    std::to_string(kUserPageSize) + " bytes"));
    EXPECT_THAT(document, HasSubstr("parts of " + std::to_string(kUserPart) + " bytes"));
    EXPECT_THAT(document, HasSubstr("0 to " + std::to_string(Payload::kCapacity)));
}

TEST(BoardProtocolDocument, NamesEveryReasonToSkipAReport) {
    const std::string document = Document();
    for (const Refusal refusal : {Refusal::WrongSize, Refusal::BadMagic, Refusal::BadVersion,
                                  Refusal::BadDirection, Refusal::BadLength, Refusal::WrongChecksum,
                                  Refusal::WrongCommand, Refusal::WrongSequence}) {
        EXPECT_THAT(document, HasSubstr(RefusalText(refusal)));
    }
}

}  // namespace
}  // namespace Korvex3Sync::tests
