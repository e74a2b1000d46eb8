#include "virtual_head/board/VirtualBoard.h"

#include <string>
#include <utility>
#include <variant>

#include "platform/board/protocol/Codec.h"
#include "virtual_head/base/Journal.h"
#include "virtual_head/board/BoardFirmware.h"
#include "virtual_head/faults/Faults.h"

namespace Korvex3Sync::virtual_head {
namespace {

using board::Command;
using board::CommandInfo;
using board::CommandMessage;
using board::Status;

bool ChangesTrigger(Command command) {
    return command == Command::SetTriggerMode || command == Command::SetTriggerPeriod ||
           command == Command::ResetDevice || command == Command::ResetFpga;
}

// A call on the user memory takes several reports. Its faults apply to the first report; it is
// entered in the journal with the last one, or with the one that fails.
bool FirstReport(const CommandMessage& message) {
    switch (message.command) {
        case Command::WriteUserMemory:
            return message.payload.ValueAt(2) == 0;
        case Command::ReadUserMemory:
            return message.payload.ValueAt(1) == 0;
        default:
            return true;
    }
}

bool LastReport(const CommandMessage& message) {
    switch (message.command) {
        case Command::WriteUserMemory:
            return message.payload.ValueAt(2) + board::kUserPart >= message.payload.ValueAt(1);
        case Command::ReadUserMemory:
            return message.payload.ValueAt(1) + board::kUserPart >= board::kUserPageSize;
        default:
            return true;
    }
}

// The arguments of the platform function: the values, without the offset of a part.
std::string Arguments(const CommandInfo& info, const CommandMessage& message) {
    if (message.command == Command::QueryFirmwareVersionFast) {
        const auto serial = message.payload.Bytes();
        return {serial.begin(), serial.end()};
    }
    std::size_t count = info.request.values;
    if (message.command == Command::WriteUserMemory || message.command == Command::ReadUserMemory) {
        --count;
    }
    std::string text = info.selected ? std::to_string(static_cast<int>(info.command)) : "";
    for (std::size_t index = 0; index < count; ++index) {
        text += (text.empty() ? "" : ", ") + std::to_string(message.payload.ValueAt(index));
    }
    return text;
}

}  // namespace

VirtualBoard::VirtualBoard(const HeadDescription& description, Journal& journal, Faults& faults,
                           TriggerChanged triggerChanged)
    : m_description(description),
      m_journal(journal),
      m_faults(faults),
      m_triggerChanged(std::move(triggerChanged)),
      m_userMemory(description.userMemory) {}

std::optional<board::Report> VirtualBoard::Execute(const board::Report& command) {
    const auto decoded = board::DecodeCommand(command);
    const auto* const message = std::get_if<CommandMessage>(&decoded);
    if (!message) {
        return std::nullopt;
    }
    board::ReplyMessage reply{message->command, message->sequence, Status::UnknownCommand, {}};
    const CommandInfo* const info = board::FindCommand(message->command);
    if (!info) {
        return board::EncodeReply(reply);
    }
    if (!info->request.Fits(message->payload.Size())) {
        reply.status = Status::BadPayload;
        return board::EncodeReply(reply);
    }

    if (m_faults.Board().SaysNothing(info->function)) {
        return std::nullopt;
    }
    const std::uint64_t powerCycle = PowerCycles();
    if (FirstReport(*message) && m_faults.Meet(info->function)) {
        reply.status = Status::Failed;
    } else if (ChangesTrigger(message->command)) {
        os::MutexGuard order(m_triggerMutex);
        BoardState state;
        {
            os::MutexGuard lock(m_mutex);
            if (m_powerCycles != powerCycle) {
                return std::nullopt;
            }
            reply.status =
                RunCommand(*message, m_description, m_state, m_userMemory, reply.payload);
            state = m_state;
        }
        if (reply.status == Status::Ok && m_triggerChanged) {
            m_triggerChanged(state, message->command != Command::SetTriggerPeriod);
        }
    } else {
        os::MutexGuard lock(m_mutex);
        if (m_powerCycles != powerCycle) {
            return std::nullopt;
        }
        reply.status = RunCommand(*message, m_description, m_state, m_userMemory, reply.payload);
    }

    const bool good = reply.status == Status::Ok;
    if (!good || LastReport(*message)) {
        m_journal.Add(info->function, Arguments(*info, *message), good ? "true" : "false");
    }
    return board::EncodeReply(reply);
}

BoardState VirtualBoard::State() const {
    os::MutexGuard lock(m_mutex);
    return m_state;
}

void VirtualBoard::PowerOff() {
    os::MutexGuard lock(m_mutex);
    m_state = BoardState{};
    ++m_powerCycles;
}

void VirtualBoard::PowerOn(const std::function<void()>& powered) {
    os::MutexGuard order(m_triggerMutex);
    PowerOff();
    powered();
}

std::uint64_t VirtualBoard::PowerCycles() const {
    os::MutexGuard lock(m_mutex);
    return m_powerCycles;
}

void VirtualBoard::SetStatus(std::uint8_t first, std::uint8_t second) {
    os::MutexGuard lock(m_mutex);
    m_state.statusFirst = first;
    m_state.statusSecond = second;
}

}  // namespace Korvex3Sync::virtual_head
