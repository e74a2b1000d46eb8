#include "platform/board/protocol/Codec.h"

#include <zlib.h>

#include <algorithm>
#include <optional>

namespace Korvex3Sync::board {
namespace {

// Offsets in a report.
constexpr std::size_t kMagic = 0;
constexpr std::size_t kVersion = 2;
constexpr std::size_t kDirection = 3;
constexpr std::size_t kCommand = 4;
constexpr std::size_t kStatus = 5;
constexpr std::size_t kSequence = 6;
constexpr std::size_t kLength = 8;
constexpr std::size_t kPayload = 9;
constexpr std::size_t kChecksum = 60;
static_assert(kPayload + Payload::kCapacity == kChecksum);
static_assert(kChecksum + 4 == kReportSize);

constexpr std::uint8_t kMagicFirst = 0x4B;
constexpr std::uint8_t kMagicSecond = 0x33;
constexpr std::uint8_t kProtocolVersion = 1;

enum class Direction : std::uint8_t { Command = 0x01, Reply = 0x02 };

std::uint32_t Checksum(std::span<const std::uint8_t> report) {
    return static_cast<std::uint32_t>(crc32(0, report.data(), kChecksum));
}

std::uint32_t StoredChecksum(std::span<const std::uint8_t> report) {
    std::uint32_t value = 0;
    for (std::size_t byte = 4; byte-- > 0;) {
        value = value << 8 | report[kChecksum + byte];
    }
    return value;
}

Report Encode(Direction direction, const ReplyMessage& message) {
    Report report{};
    report[kMagic] = kMagicFirst;
    report[kMagic + 1] = kMagicSecond;
    report[kVersion] = kProtocolVersion;
    report[kDirection] = static_cast<std::uint8_t>(direction);
    report[kCommand] = static_cast<std::uint8_t>(message.command);
    report[kStatus] = static_cast<std::uint8_t>(message.status);
    report[kSequence] = static_cast<std::uint8_t>(message.sequence);
    report[kSequence + 1] = static_cast<std::uint8_t>(message.sequence >> 8);
    report[kLength] = static_cast<std::uint8_t>(message.payload.Size());
    const auto payload = message.payload.Bytes();
    std::copy(payload.begin(), payload.end(), report.begin() + kPayload);
    const std::uint32_t checksum = Checksum(report);
    for (std::size_t byte = 0; byte < 4; ++byte) {
        report[kChecksum + byte] = static_cast<std::uint8_t>(checksum >> (8 * byte));
    }
    return report;
}

std::optional<Refusal> Check(std::span<const std::uint8_t> bytes, Direction direction) {
    if (bytes.size() != kReportSize) {
        return Refusal::WrongSize;
    }
    if (bytes[kMagic] != kMagicFirst || bytes[kMagic + 1] != kMagicSecond) {
        return Refusal::BadMagic;
    }
    if (bytes[kVersion] != kProtocolVersion) {
        return Refusal::BadVersion;
    }
    if (bytes[kDirection] != static_cast<std::uint8_t>(direction)) {
        return Refusal::BadDirection;
    }
    if (bytes[kLength] > Payload::kCapacity) {
        return Refusal::BadLength;
    }
    if (StoredChecksum(bytes) != Checksum(bytes)) {
        return Refusal::WrongChecksum;
    }
    return std::nullopt;
}

// Only for bytes that Check has passed.
ReplyMessage Read(std::span<const std::uint8_t> bytes) {
    ReplyMessage message{
        static_cast<Command>(bytes[kCommand]),
        static_cast<std::uint16_t>(bytes[kSequence] | bytes[kSequence + 1] << 8),
        static_cast<Status>(bytes[kStatus]),
        {},
    };
    message.payload.PutBytes(bytes.subspan(kPayload, bytes[kLength]));
    return message;
}

}  // namespace

const char* RefusalText(Refusal refusal) {
    switch (refusal) {
        case Refusal::WrongSize:
            return "wrong size";
        case Refusal::BadMagic:
            return "not a report of the board";
        case Refusal::BadVersion:
            return "another protocol version";
        case Refusal::BadDirection:
            return "wrong direction";
        case Refusal::BadLength:
            return "bad payload length";
        case Refusal::WrongChecksum:
            return "wrong checksum";
        case Refusal::WrongCommand:
            return "reply to another command";
        case Refusal::WrongSequence:
            return "reply to an earlier command";
    }
    return "unknown";
}

Report EncodeCommand(const CommandMessage& message) {
    return Encode(Direction::Command,
                  {message.command, message.sequence, Status::Ok, message.payload});
}

Report EncodeReply(const ReplyMessage& message) {
    return Encode(Direction::Reply, message);
}

std::variant<CommandMessage, Refusal> DecodeCommand(std::span<const std::uint8_t> bytes) {
    if (const auto refusal = Check(bytes, Direction::Command)) {
        return *refusal;
    }
    const ReplyMessage message = Read(bytes);
    return CommandMessage{message.command, message.sequence, message.payload};
}

std::variant<ReplyMessage, Refusal> DecodeReply(std::span<const std::uint8_t> bytes,
                                                Command command, std::uint16_t sequence) {
    if (const auto refusal = Check(bytes, Direction::Reply)) {
        return *refusal;
    }
    const ReplyMessage message = Read(bytes);
    if (message.command != command) {
        return Refusal::WrongCommand;
    }
    if (message.sequence != sequence) {
        return Refusal::WrongSequence;
    }
    const CommandInfo* const info = FindCommand(command);
    if (message.status == Status::Ok && info && !info->reply.Fits(message.payload.Size())) {
        return Refusal::BadLength;
    }
    return message;
}

}  // namespace Korvex3Sync::board
