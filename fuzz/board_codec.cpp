// Any bytes at both ends of the board's report protocol, and at the virtual board behind it.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <variant>

#include "platform/board/protocol/Codec.h"
#include "virtual_head/base/Journal.h"
#include "virtual_head/board/VirtualBoard.h"
#include "virtual_head/config/HeadDescription.h"
#include "virtual_head/faults/Faults.h"

namespace board = Korvex3Sync::board;
namespace virtual_head = Korvex3Sync::virtual_head;

namespace {

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

bool Same(const board::Payload& one, const board::Payload& other) {
    return std::ranges::equal(one.Bytes(), other.Bytes());
}

/// What was decoded says the same when it is encoded and decoded again.
void CheckCommand(std::span<const std::uint8_t> bytes) {
    const auto decoded = board::DecodeCommand(bytes);
    const auto* const message = std::get_if<board::CommandMessage>(&decoded);
    if (message == nullptr) {
        return;
    }
    const auto again = board::DecodeCommand(board::EncodeCommand(*message));
    const auto* const same = std::get_if<board::CommandMessage>(&again);
    Require(same != nullptr && same->command == message->command &&
            same->sequence == message->sequence && Same(same->payload, message->payload));
}

/// An encoded reply is decoded as what it was, unless its payload is none of its command; and it is
/// the reply to nothing else.
void CheckEncodedReply(const board::CommandInfo& info, const board::ReplyMessage& message) {
    const board::Report report = board::EncodeReply(message);
    const auto decoded = board::DecodeReply(report, message.command, message.sequence);
    if (message.status == board::Status::Ok && !info.reply.Fits(message.payload.Size())) {
        Require(std::get<board::Refusal>(decoded) == board::Refusal::BadLength);
    } else {
        const auto& same = std::get<board::ReplyMessage>(decoded);
        Require(same.command == message.command && same.sequence == message.sequence &&
                same.status == message.status && Same(same.payload, message.payload));
    }
    const auto later = static_cast<std::uint16_t>(message.sequence + 1);
    Require(std::get<board::Refusal>(board::DecodeReply(report, message.command, later)) ==
            board::Refusal::WrongSequence);
    const auto other = static_cast<board::Command>(static_cast<std::uint8_t>(message.command) ^ 1U);
    Require(std::get<board::Refusal>(board::DecodeReply(report, other, message.sequence)) ==
            board::Refusal::WrongCommand);
}

/// The bytes as a reply to every command, with the number that they carry.
void CheckReply(std::span<const std::uint8_t> bytes) {
    const auto number = [&](std::size_t place) {
        return place < bytes.size() ? bytes[place] : std::uint8_t{0};
    };
    const auto sequence = static_cast<std::uint16_t>(number(6) | number(7) << 8);
    for (const board::CommandInfo& info : board::AllCommands()) {
        const auto decoded = board::DecodeReply(bytes, info.command, sequence);
        if (const auto* const message = std::get_if<board::ReplyMessage>(&decoded)) {
            CheckEncodedReply(info, *message);
        }
    }
}

/// The virtual board answers every command that is one with a reply to it, and nothing else.
void CheckBoard(const board::Report& report) {
    static const virtual_head::HeadDescription description;
    static virtual_head::Journal journal;
    static virtual_head::Faults faults;
    static virtual_head::VirtualBoard virtualBoard(description, journal, faults, nullptr);
    const auto decoded = board::DecodeCommand(report);
    const auto* const message = std::get_if<board::CommandMessage>(&decoded);
    const auto answer = virtualBoard.Execute(report);
    Require(answer.has_value() == (message != nullptr));
    if (message != nullptr) {
        const auto reply = board::DecodeReply(*answer, message->command, message->sequence);
        Require(std::holds_alternative<board::ReplyMessage>(reply));
    }
}

/// Bytes as they stand seldom have the right checksum: the same as code and payload of a command.
void CheckAsCommand(std::span<const std::uint8_t> bytes) {
    board::CommandMessage message{static_cast<board::Command>(bytes.front()), 1, {}};
    const auto payload = bytes.subspan(1);
    message.payload.PutBytes(payload.first(std::min(payload.size(), board::Payload::kCapacity)));
    CheckBoard(board::EncodeCommand(message));
}

/// The same for a reply: command, status, number and payload.
void CheckAsReply(std::span<const std::uint8_t> bytes) {
    constexpr std::size_t kHead = 4;
    if (bytes.size() < kHead) {
        return;
    }
    const auto commands = board::AllCommands();
    const board::CommandInfo& info = commands[bytes[0] % commands.size()];
    board::ReplyMessage message{info.command,
                                static_cast<std::uint16_t>(bytes[2] | bytes[3] << 8),
                                static_cast<board::Status>(bytes[1]),
                                {}};
    const auto payload = bytes.subspan(kHead);
    message.payload.PutBytes(payload.first(std::min(payload.size(), board::Payload::kCapacity)));
    CheckEncodedReply(info, message);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span bytes(data, size);
    CheckCommand(bytes);
    CheckReply(bytes);
    CheckAsReply(bytes);
    board::Report report{};
    std::copy_n(bytes.begin(), std::min(bytes.size(), report.size()), report.begin());
    CheckBoard(report);
    if (!bytes.empty()) {
        CheckAsCommand(bytes);
    }
    return 0;
}
