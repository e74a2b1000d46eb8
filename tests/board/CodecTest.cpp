#include "platform/board/protocol/Codec.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <random>
#include <set>

#include "board/Samples.h"
#include "support/Seed.h"

namespace Korvex3Sync::tests {
namespace {

using namespace board;

Report SampleReply() {
    return EncodeReply(
        {Command::QueryTriggerPeriod, 7, Status::Ok, ValuesPayload(std::vector<std::int32_t>{10})});
}

Refusal RefusalOf(std::span<const std::uint8_t> bytes,
                  Command command = Command::QueryTriggerPeriod, std::uint16_t sequence = 7) {
    const auto decoded = DecodeReply(bytes, command, sequence);
    EXPECT_TRUE(std::holds_alternative<Refusal>(decoded));
    return std::get<Refusal>(decoded);
}

// A report changed at one place, with a checksum that fits again.
Report Resealed(Report report, std::size_t place, std::uint8_t byte) {
    report[place] = byte;
    std::uint32_t checksum = 0xFFFFFFFFU;
    for (std::size_t index = 0; index < 60; ++index) {
        checksum ^= report[index];
        for (int bit = 0; bit < 8; ++bit) {
            checksum = checksum >> 1 ^ ((checksum & 1U) != 0 ? 0xEDB88320U : 0U);
        }
    }
    checksum = ~checksum;
    for (std::size_t byteIndex = 0; byteIndex < 4; ++byteIndex) {
        report[60 + byteIndex] = static_cast<std::uint8_t>(checksum >> (8 * byteIndex));
    }
    return report;
}

TEST(Payload, KeepsTheExtremesOfAValue) {
    for (const std::int32_t value : {0, 1, -1, std::numeric_limits<std::int32_t>::max(),
                                     std::numeric_limits<std::int32_t>::min()}) {
        Payload payload;
        ASSERT_TRUE(payload.PutValue(7));
        ASSERT_TRUE(payload.PutValue(value));
        EXPECT_EQ(payload.ValueAt(1), value);
    }
}

TEST(Payload, PutsTheLowestByteFirst) {
    Payload payload;
    payload.PutValue(0x01020304);
    EXPECT_EQ(BytesOf(payload), (std::vector<std::uint8_t>{4, 3, 2, 1}));
}

TEST(Payload, TakesWhatFitsAndNoByteMore) {
    Payload payload;
    EXPECT_TRUE(payload.PutBytes(std::vector<std::uint8_t>(Payload::kCapacity - 3)));
    EXPECT_FALSE(payload.PutValue(1));
    EXPECT_TRUE(payload.PutBytes(std::vector<std::uint8_t>(3)));
    EXPECT_FALSE(payload.PutBytes(std::vector<std::uint8_t>(1)));
    EXPECT_EQ(payload.Size(), Payload::kCapacity);
}

TEST(Payload, HasNothingBehindItsEnd) {
    Payload payload;
    payload.PutValue(5);
    EXPECT_EQ(payload.ValueAt(1), 0);
    EXPECT_TRUE(payload.BytesBehind(1).empty());
    EXPECT_TRUE(payload.BytesBehind(2).empty());
    EXPECT_TRUE(payload.BytesBehind(std::numeric_limits<std::size_t>::max()).empty());
}

TEST(Codec, EveryCommandComesBackAsItWasSent) {
    std::uint16_t sequence = 65500;  // passes the wrap
    for (const CommandInfo& info : AllCommands()) {
        const Payload payload = SamplePayload(info.request);
        const auto decoded = DecodeCommand(EncodeCommand({info.command, ++sequence, payload}));
        const auto* const message = std::get_if<CommandMessage>(&decoded);
        ASSERT_TRUE(message) << info.function;
        EXPECT_EQ(message->command, info.command);
        EXPECT_EQ(message->sequence, sequence);
        EXPECT_EQ(BytesOf(message->payload), BytesOf(payload)) << info.function;
    }
}

TEST(Codec, EveryReplyComesBackAsItWasSent) {
    std::uint16_t sequence = 65500;
    for (const CommandInfo& info : AllCommands()) {
        const Payload payload = SamplePayload(info.reply);
        ++sequence;
        const auto decoded = DecodeReply(EncodeReply({info.command, sequence, Status::Ok, payload}),
                                         info.command, sequence);
        const auto* const message = std::get_if<ReplyMessage>(&decoded);
        ASSERT_TRUE(message) << info.function;
        EXPECT_EQ(message->status, Status::Ok);
        EXPECT_EQ(BytesOf(message->payload), BytesOf(payload)) << info.function;
    }
}

TEST(Codec, EveryStatusComesBack) {
    for (const Status status : {Status::Failed, Status::BadValue, Status::BadPayload,
                                Status::UnknownCommand, static_cast<Status>(200)}) {
        const auto decoded =
            DecodeReply(EncodeReply({Command::ResetFpga, 1, status, {}}), Command::ResetFpga, 1);
        ASSERT_TRUE(std::holds_alternative<ReplyMessage>(decoded));
        EXPECT_EQ(std::get<ReplyMessage>(decoded).status, status);
    }
}

TEST(Codec, RefusesAShortAndALongReport) {
    const Report report = SampleReply();
    EXPECT_EQ(RefusalOf({}), Refusal::WrongSize);
    EXPECT_EQ(RefusalOf(std::span(report).first(63)), Refusal::WrongSize);
    std::vector<std::uint8_t> longer(report.begin(), report.end());
    longer.push_back(0);
    EXPECT_EQ(RefusalOf(longer), Refusal::WrongSize);
}

TEST(Codec, RefusesEachBadFieldWithItsOwnReason) {
    const Report report = SampleReply();
    EXPECT_EQ(RefusalOf(Resealed(report, 0, 0x00)), Refusal::BadMagic);
    EXPECT_EQ(RefusalOf(Resealed(report, 1, 0x00)), Refusal::BadMagic);
    EXPECT_EQ(RefusalOf(Resealed(report, 2, 2)), Refusal::BadVersion);
    EXPECT_EQ(RefusalOf(Resealed(report, 3, 0x01)), Refusal::BadDirection);
    EXPECT_EQ(RefusalOf(Resealed(report, 8, 52)), Refusal::BadLength);
    EXPECT_EQ(RefusalOf(Resealed(report, 8, 255)), Refusal::BadLength);
    // A length that a report may have, but not the reply to this command.
    EXPECT_EQ(RefusalOf(Resealed(report, 8, 3)), Refusal::BadLength);
    EXPECT_EQ(RefusalOf(Resealed(report, 8, 0)), Refusal::BadLength);
    EXPECT_EQ(RefusalOf(report, Command::QueryProjectorBrightness), Refusal::WrongCommand);
    EXPECT_EQ(RefusalOf(report, Command::QueryTriggerPeriod, 8), Refusal::WrongSequence);
}

TEST(Codec, RefusesACommandWhereTheBoardExpectsOneAndGetsAReply) {
    const auto decoded = DecodeCommand(SampleReply());
    ASSERT_TRUE(std::holds_alternative<Refusal>(decoded));
    EXPECT_EQ(std::get<Refusal>(decoded), Refusal::BadDirection);
}

TEST(Codec, NoticesEverySingleBitThatChanged) {
    const Report report = SampleReply();
    for (std::size_t bit = 0; bit < kReportSize * 8; ++bit) {
        Report damaged = report;
        damaged[bit / 8] = static_cast<std::uint8_t>(damaged[bit / 8] ^ 1U << bit % 8);
        EXPECT_TRUE(
            std::holds_alternative<Refusal>(DecodeReply(damaged, Command::QueryTriggerPeriod, 7)))
            << "bit " << bit;
        if (bit >= 9 * 8) {
            EXPECT_EQ(RefusalOf(damaged), Refusal::WrongChecksum) << "bit " << bit;
        }
    }
}

TEST(Codec, AnErrorReplyNeedsNoPayload) {
    const auto decoded =
        DecodeReply(EncodeReply({Command::QueryTriggerPeriod, 7, Status::Failed, {}}),
                    Command::QueryTriggerPeriod, 7);
    EXPECT_TRUE(std::holds_alternative<ReplyMessage>(decoded));
}

TEST(Codec, EveryRefusalHasItsOwnText) {
    std::set<std::string> texts;
    for (const Refusal refusal : {Refusal::WrongSize, Refusal::BadMagic, Refusal::BadVersion,
                                  Refusal::BadDirection, Refusal::BadLength, Refusal::WrongChecksum,
                                  Refusal::WrongCommand, Refusal::WrongSequence}) {
        EXPECT_TRUE(texts.insert(RefusalText(refusal)).second) << RefusalText(refusal);
    }
}

TEST(Codec, LooksAtAnyBytesWithoutHarm) {
    std::mt19937 random(support::Seed());
    std::uniform_int_distribution<int> byte(0, 255);
    const Report good = SampleReply();
    int taken = 0;
    for (int round = 0; round < 100000; ++round) {
        Report report;
        for (std::uint8_t& each : report) {
            each = static_cast<std::uint8_t>(byte(random));
        }
        // Two of three keep a good beginning, so that they pass the first checks; of these every
        // second has a checksum that fits, and gets to the last.
        if (round % 3 != 0) {
            std::copy_n(good.begin(), 4, report.begin());
            report[3] = static_cast<std::uint8_t>(1 + byte(random) % 2);
            if (round % 2 != 0) {
                report = Resealed(report, 4, report[4]);
            }
        }
        const auto command = DecodeCommand(report);
        if (const auto* const message = std::get_if<CommandMessage>(&command)) {
            EXPECT_LE(message->payload.Size(), Payload::kCapacity);
            ++taken;
        }
        const auto reply = DecodeReply(report, static_cast<Command>(report[4]),
                                       static_cast<std::uint16_t>(report[6] | report[7] << 8));
        if (const auto* const message = std::get_if<ReplyMessage>(&reply)) {
            EXPECT_LE(message->payload.Size(), Payload::kCapacity);
            ++taken;
        }
    }
    EXPECT_GT(taken, 0);
}

}  // namespace
}  // namespace Korvex3Sync::tests
