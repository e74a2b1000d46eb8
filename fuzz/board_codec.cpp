// Any bytes at both ends of the board's report protocol, and at the virtual board behind it.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <variant>

#include "platform/board/protocol/Codec.h"
#include "virtual_head/Faults.h"
#include "virtual_head/HeadDescription.h"
#include "virtual_head/Journal.h"
#include "virtual_head/VirtualBoard.h"

namespace board = Korvex3Sync::board;
namespace virtual_head = Korvex3Sync::virtual_head;

namespace {

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
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
            same->sequence == message->sequence && same->payload.Size() == message->payload.Size());
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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span bytes(data, size);
    CheckCommand(bytes);
    for (const board::CommandInfo& info : board::AllCommands()) {
        board::DecodeReply(bytes, info.command, 0);
    }
    board::Report report{};
    std::copy_n(bytes.begin(), std::min(bytes.size(), report.size()), report.begin());
    CheckBoard(report);
    if (!bytes.empty()) {
        CheckAsCommand(bytes);
    }
    return 0;
}
