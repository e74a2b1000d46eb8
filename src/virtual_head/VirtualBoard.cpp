#include "virtual_head/VirtualBoard.h"

#include <algorithm>
#include <span>
#include <string>
#include <utility>
#include <variant>

#include "platform/board/protocol/Codec.h"
#include "virtual_head/Faults.h"
#include "virtual_head/Journal.h"

namespace Korvex3Sync::virtual_head {
namespace {

using board::Command;
using board::CommandInfo;
using board::CommandMessage;
using board::Payload;
using board::Status;
using UserMemory = std::array<std::uint8_t, 4096>;
static_assert(UserMemory{}.size() == std::size_t{board::kUserPages} * board::kUserPageSize);

constexpr int kTriggerOff = 5;

// Only for commands whose payload has the shape of the command.
int Value(const Payload& payload, std::size_t index) {
    return payload.ValueAt(index).value_or(0);
}

Payload Answer(std::initializer_list<std::int32_t> values) {
    return board::ValuesPayload({values.begin(), values.size()});
}

Payload Text(const std::string& text) {
    Payload payload;
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    payload.PutBytes({bytes, std::min(text.size(), Payload::kCapacity)});
    return payload;
}

// A page is written as a whole: its first part clears it, so that no rest of a longer text stays.
Status WriteUserMemory(UserMemory& memory, const Payload& request) {
    const int page = Value(request, 0);
    const int length = Value(request, 1);
    const int offset = Value(request, 2);
    const auto bytes = request.BytesBehind(3);
    if (page < 0 || page >= board::kUserPages || length < 0 || length > board::kUserPageSize ||
        offset < 0 || offset > length ||
        static_cast<int>(bytes.size()) != std::min(board::kUserPart, length - offset)) {
        return Status::BadValue;
    }
    const auto begin = memory.begin() + std::ptrdiff_t{page} * board::kUserPageSize;
    if (offset == 0) {
        std::fill_n(begin, board::kUserPageSize, std::uint8_t{0});
    }
    std::copy(bytes.begin(), bytes.end(), begin + offset);
    return Status::Ok;
}

Status ReadUserMemory(const UserMemory& memory, const Payload& request, Payload& reply) {
    const int page = Value(request, 0);
    const int offset = Value(request, 1);
    if (page < 0 || page >= board::kUserPages || offset < 0 ||
        offset > board::kUserPageSize - board::kUserPart) {
        return Status::BadValue;
    }
    const auto place = static_cast<std::size_t>(page * board::kUserPageSize + offset);
    reply.PutBytes(std::span(memory).subspan(place, board::kUserPart));
    return Status::Ok;
}

// The simulation needs a period that passes; every other number is stored as it comes.
Status SetTriggerPeriod(BoardState& state, int period) {
    if (period < 1) {
        return Status::BadValue;
    }
    state.triggerPeriod = period;
    return Status::Ok;
}

Status Run(const CommandMessage& message, const HeadDescription& description, BoardState& state,
           UserMemory& memory, Payload& reply) {
    const Payload& request = message.payload;
    const int first = Value(request, 0);
    switch (message.command) {
        case Command::QueryFirmwareVersionFast:
        case Command::QueryFirmwareVersion:
            reply = Text(description.firmware);
            break;
        case Command::ResetDevice:
            state = BoardState{};
            break;
        case Command::ResetFpga:
            state.triggerMode = kTriggerOff;
            break;
        case Command::QueryCurrentStatus:
            reply = Answer({state.statusFirst, state.statusSecond});
            break;
        case Command::EnableHeartbeat:
            state.heartbeat = first != 0;
            break;
        case Command::OpenOrCloseStrobeFlicker:
            state.strobeRoute = first;
            state.strobeState = Value(request, 1);
            break;
        case Command::SetLaserEnable:
            state.laserEnable = first != 0;
            state.laserMode = Value(request, 1);
            break;
        case Command::SetIrLaserEnable:
            state.irLaserEnable = first != 0;
            break;
        case Command::SetIrLaserLevel:
            state.irLaserLevel = first;
            break;
        case Command::SetProjectorBrightness:
            state.projectorBrightness = first;
            break;
        case Command::QueryProjectorBrightness:
            reply = Answer({state.projectorBrightness});
            break;
        case Command::Project:
            state.projectType = first;
            break;
        case Command::SetDistanceIndicateState:
            state.distanceState = first;
            break;
        case Command::SetTriggerPeriod:
            return SetTriggerPeriod(state, first);
        case Command::QueryTriggerPeriod:
            reply = Answer({state.triggerPeriod});
            break;
        case Command::SetTriggerMode:
            state.triggerMode = first;
            break;
        case Command::SetLedDuty:
            state.strobeDuty = {first, Value(request, 1), Value(request, 2)};
            break;
        case Command::QueryLedDuty:
            reply = board::ValuesPayload(state.strobeDuty);
            break;
        case Command::SetLaserLineDuty:
            state.laserLineDuty = first;
            break;
        case Command::QueryLaserLineDuty:
            reply = Answer({state.laserLineDuty});
            break;
        case Command::SetProjectorDuty:
            state.projectorDuty = first;
            break;
        case Command::QueryProjectorDuty:
            reply = Answer({state.projectorDuty});
            break;
        case Command::SetIrLaserDuty:
            state.irLaserDuty = first;
            break;
        case Command::QueryIrLaserDuty:
            reply = Answer({state.irLaserDuty});
            break;
        case Command::SetLedWorkTime:
            state.strobeWorkTime[first != 0 ? 0 : 1] = Value(request, 1);
            break;
        case Command::QueryLedWorkTime:
            reply = Answer({state.strobeWorkTime[first != 0 ? 0 : 1]});
            break;
        case Command::SetLaserLineWorkTime:
            state.laserLineWorkTime = first;
            break;
        case Command::QueryLaserLineWorkTime:
            reply = Answer({state.laserLineWorkTime});
            break;
        case Command::SetProjectorWorkTime:
            state.projectorWorkTime = first;
            break;
        case Command::QueryProjectorWorkTime:
            reply = Answer({state.projectorWorkTime});
            break;
        case Command::SetIrLaserWorkTime:
            state.irLaserWorkTime = first;
            break;
        case Command::QueryIrLaserWorkTime:
            reply = Answer({state.irLaserWorkTime});
            break;
        case Command::WriteUserMemory:
            return WriteUserMemory(memory, request);
        case Command::ReadUserMemory:
            return ReadUserMemory(memory, request, reply);
    }
    return Status::Ok;
}

bool ChangesTrigger(Command command) {
    return command == Command::SetTriggerMode || command == Command::SetTriggerPeriod ||
           command == Command::ResetDevice || command == Command::ResetFpga;
}

// A call of the user memory takes several reports: it meets faults with the first and is entered in
// the journal with the last, or with the one that fails.
bool FirstReport(const CommandMessage& message) {
    switch (message.command) {
        case Command::WriteUserMemory:
            return Value(message.payload, 2) == 0;
        case Command::ReadUserMemory:
            return Value(message.payload, 1) == 0;
        default:
            return true;
    }
}

bool LastReport(const CommandMessage& message) {
    switch (message.command) {
        case Command::WriteUserMemory:
            return Value(message.payload, 2) + board::kUserPart >= Value(message.payload, 1);
        case Command::ReadUserMemory:
            return Value(message.payload, 1) + board::kUserPart >= board::kUserPageSize;
        default:
            return true;
    }
}

// The arguments of the platform function, which are the values but for the place of a part.
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
        text += (text.empty() ? "" : ", ") + std::to_string(Value(message.payload, index));
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

    if (FirstReport(*message) && m_faults.Meet(info->function)) {
        reply.status = Status::Failed;
    } else if (ChangesTrigger(message->command)) {
        std::lock_guard order(m_triggerMutex);
        std::unique_lock lock(m_mutex);
        reply.status = Run(*message, m_description, m_state, m_userMemory, reply.payload);
        const BoardState state = m_state;
        lock.unlock();
        if (reply.status == Status::Ok && m_triggerChanged) {
            m_triggerChanged(state, message->command != Command::SetTriggerPeriod);
        }
    } else {
        std::lock_guard lock(m_mutex);
        reply.status = Run(*message, m_description, m_state, m_userMemory, reply.payload);
    }

    const bool good = reply.status == Status::Ok;
    if (!good || LastReport(*message)) {
        m_journal.Add(info->function, Arguments(*info, *message), good ? "true" : "false");
    }
    return board::EncodeReply(reply);
}

BoardState VirtualBoard::State() const {
    std::lock_guard lock(m_mutex);
    return m_state;
}

void VirtualBoard::SetStatus(std::uint8_t first, std::uint8_t second) {
    std::lock_guard lock(m_mutex);
    m_state.statusFirst = first;
    m_state.statusSecond = second;
}

}  // namespace Korvex3Sync::virtual_head
