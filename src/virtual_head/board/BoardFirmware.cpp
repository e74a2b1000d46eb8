#include "virtual_head/board/BoardFirmware.h"

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <string>

#include "platform/board/protocol/Commands.h"
#include "platform/include/BoardFacts.h"

namespace Korvex3Sync::virtual_head {
namespace {

using board::Command;
using board::Payload;
using board::Status;
static_assert(UserMemory{}.size() == std::size_t{board::kUserPages} * board::kUserPageSize);

Payload Answer(std::initializer_list<std::int32_t> values) {
    return board::ValuesPayload({values.begin(), values.size()});
}

Payload Text(const std::string& text) {
    Payload payload;
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    payload.PutBytes({bytes, std::min(text.size(), Payload::kCapacity)});
    return payload;
}

// A write replaces the whole page: its first part clears the page, so nothing of a longer text
// remains.
Status WriteUserMemory(UserMemory& memory, const Payload& request) {
    const int page = request.ValueAt(0);
    const int length = request.ValueAt(1);
    const int offset = request.ValueAt(2);
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
    const int page = request.ValueAt(0);
    const int offset = request.ValueAt(1);
    if (page < 0 || page >= board::kUserPages || offset < 0 ||
        offset > board::kUserPageSize - board::kUserPart) {
        return Status::BadValue;
    }
    const auto begin = memory.begin() + std::ptrdiff_t{page} * board::kUserPageSize + offset;
    reply.PutBytes({begin, begin + board::kUserPart});
    return Status::Ok;
}

}  // namespace

Status RunCommand(const board::CommandMessage& message, const HeadDescription& description,
                  BoardState& state, UserMemory& memory, Payload& reply) {
    const Payload& request = message.payload;
    const int first = request.ValueAt(0);
    switch (message.command) {
        case Command::QueryFirmwareVersionFast:
        case Command::QueryFirmwareVersion:
            reply = Text(description.firmware);
            break;
        case Command::ResetDevice:
            state = BoardState{};
            break;
        case Command::ResetFpga:
            state.triggerMode = hardware::trigger_mode::kOff;
            break;
        case Command::QueryCurrentStatus:
            reply = Answer({state.statusFirst, state.statusSecond});
            break;
        case Command::EnableHeartbeat:
            state.heartbeat = first != 0;
            break;
        case Command::OpenOrCloseStrobeFlicker:
            state.strobeRoute = first;
            state.strobeState = request.ValueAt(1);
            break;
        case Command::SetLaserEnable:
            state.laserEnable = first != 0;
            state.laserMode = request.ValueAt(1);
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
            state.triggerPeriod = first;
            break;
        case Command::QueryTriggerPeriod:
            reply = Answer({state.triggerPeriod});
            break;
        case Command::SetTriggerMode:
            state.triggerMode = first;
            break;
        case Command::SetLedDuty:
            state.strobeDuty = {first, request.ValueAt(1), request.ValueAt(2)};
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
            state.strobeWorkTime[first != 0 ? 0 : 1] = request.ValueAt(1);
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

}  // namespace Korvex3Sync::virtual_head
