#pragma once

#include <cstdint>
#include <span>
#include <variant>

#include "platform/board/protocol/Commands.h"
#include "platform/board/protocol/Payload.h"
#include "platform/board/protocol/Report.h"

namespace Korvex3Sync::board {

/// The board's word on a command.
enum class Status : std::uint8_t {
    Ok = 0,
    Failed = 1,          // the command is right, the board could not do it
    BadValue = 2,        // a value that the board cannot take
    BadPayload = 3,      // not the payload of this command
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

/// Why a report is not taken.
enum class Refusal {
    WrongSize,      // not 64 bytes
    BadMagic,       // does not begin as a report of the board
    BadVersion,     // another version of the protocol
    BadDirection,   // a command where a reply belongs, or the reverse
    BadLength,      // a payload that cannot be in a report, or not this command's
    WrongChecksum,  // the bytes are not those that were sent
    WrongCommand,   // the reply to another command
    WrongSequence,  // the reply to an earlier command of the same code
};

/// For log lines, in a few words.
const char* RefusalText(Refusal refusal);

// Pure functions; decoding looks at any bytes whatever without harm.

Report EncodeCommand(const CommandMessage& message);
Report EncodeReply(const ReplyMessage& message);

/// The board's side. A code without a command is no refusal: the board answers it with
/// Status::UnknownCommand.
std::variant<CommandMessage, Refusal> DecodeCommand(std::span<const std::uint8_t> bytes);
/// The library's side: the reply to `command` as it was sent with `sequence`. With Status::Ok the
/// payload has the shape of that command's reply.
std::variant<ReplyMessage, Refusal> DecodeReply(std::span<const std::uint8_t> bytes,
                                                Command command, std::uint16_t sequence);

}  // namespace Korvex3Sync::board
