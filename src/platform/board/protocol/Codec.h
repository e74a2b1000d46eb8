#pragma once

#include <cstdint>
#include <span>
#include <variant>

#include "platform/board/protocol/Commands.h"
#include "platform/board/protocol/Payload.h"
#include "platform/board/protocol/Report.h"

namespace Korvex3Sync::board {

/// The board's result of a command.
enum class Status : std::uint8_t {
    Ok = 0,
    Failed = 1,          // the command is valid, but the board failed to do it
    BadValue = 2,        // invalid value
    BadPayload = 3,      // the payload does not fit the command
    UnknownCommand = 4,  // no command has this code
};

struct CommandMessage {
    Command command;
    std::uint16_t sequence;
    Payload payload;
};

struct ReplyMessage {
    Command command;
    std::uint16_t sequence;
    Status status;
    Payload payload;
};

/// Why a report is refused.
enum class Refusal {
    WrongSize,      // not 64 bytes
    BadMagic,       // does not begin like a report of the board
    BadVersion,     // another version of the protocol
    BadDirection,   // a command instead of a reply, or the reverse
    BadLength,      // impossible payload length, or not that of this command
    WrongChecksum,  // the bytes were damaged
    WrongCommand,   // the reply to another command
    WrongSequence,  // the reply to an earlier command of the same code
};

/// A short text for log lines.
const char* RefusalText(Refusal refusal);

// Pure functions. Decoding accepts any bytes.

Report EncodeCommand(const CommandMessage& message);
Report EncodeReply(const ReplyMessage& message);

/// For the board's side. Does not refuse an unknown command code: the board answers it with
/// Status::UnknownCommand.
std::variant<CommandMessage, Refusal> DecodeCommand(std::span<const std::uint8_t> bytes);
/// For the library's side: decodes the reply to `command`, which was sent with `sequence`. With
/// Status::Ok the payload has the shape of that command's reply.
std::variant<ReplyMessage, Refusal> DecodeReply(std::span<const std::uint8_t> bytes,
                                                Command command, std::uint16_t sequence);

}  // namespace Korvex3Sync::board
