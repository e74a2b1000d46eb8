#include "platform/board/protocol/Commands.h"

#include <algorithm>
#include <array>

#include "platform/board/protocol/Payload.h"

namespace Korvex3Sync::board {
namespace {

constexpr PayloadShape kNothing{};
constexpr PayloadShape kText{0, 0, Payload::kCapacity};

constexpr PayloadShape Values(std::size_t count) {
    return {count, 0, 0};
}

constexpr std::array kCommands{
    CommandInfo{Command::QueryFirmwareVersionFast, "zr3DQueryFirmwareVersionFast", false, kText,
                kText},
    CommandInfo{Command::QueryFirmwareVersion, "zr3DQueryProjectorFirewareVersion", false, kNothing,
                kText},
    CommandInfo{Command::ResetDevice, "zr3DResetDevice", false, kNothing, kNothing},
    CommandInfo{Command::ResetFpga, "zr3DResetFPGA", false, kNothing, kNothing},
    CommandInfo{Command::QueryCurrentStatus, "zr3DQueryCurrentStatus", false, kNothing, Values(2)},
    CommandInfo{Command::EnableHeartbeat, "zr3DEnableHeartbeat", false, Values(1), kNothing},
    CommandInfo{Command::OpenOrCloseStrobeFlicker, "zr3DOpenOrCloseStrobeFlicker", false, Values(2),
                kNothing},
    CommandInfo{Command::SetLaserEnable, "zr3DSetLaserEnable", false, Values(2), kNothing},
    CommandInfo{Command::SetIrLaserEnable, "zr3DSetIRLaserEnable", false, Values(1), kNothing},
    CommandInfo{Command::SetIrLaserLevel, "zr3DSetIRLaserLevel", false, Values(1), kNothing},
    CommandInfo{Command::SetProjectorBrightness, "zr3DSetProjectorBrightness", false, Values(1),
                kNothing},
    CommandInfo{Command::QueryProjectorBrightness, "zr3DQueryProjectorBrightness", false, kNothing,
                Values(1)},
    CommandInfo{Command::Project, "zr3DProject", false, Values(1), kNothing},
    CommandInfo{Command::SetDistanceIndicateState, "zr3DSetDistanceIndicateState", false, Values(1),
                kNothing},
    CommandInfo{Command::SetTriggerPeriod, "zr3DSetVideoTriggerPeriod", false, Values(1), kNothing},
    CommandInfo{Command::QueryTriggerPeriod, "zr3DQueryTriggerPeriod", false, kNothing, Values(1)},
    CommandInfo{Command::SetTriggerMode, "zr3DSetVideoTrigleMode", false, Values(1), kNothing},
    CommandInfo{Command::SetLedDuty, "zr3DSetLedDutioRatio", true, Values(3), kNothing},
    CommandInfo{Command::QueryLedDuty, "zr3DQueryLedDutioRatio", true, kNothing, Values(3)},
    CommandInfo{Command::SetLaserLineDuty, "zr3DSetDutioRatio", true, Values(1), kNothing},
    CommandInfo{Command::QueryLaserLineDuty, "zr3DQueryDutioRatio", true, kNothing, Values(1)},
    CommandInfo{Command::SetProjectorDuty, "zr3DSetDutioRatio", true, Values(1), kNothing},
    CommandInfo{Command::QueryProjectorDuty, "zr3DQueryDutioRatio", true, kNothing, Values(1)},
    CommandInfo{Command::SetIrLaserDuty, "zr3DSetDutioRatio", true, Values(1), kNothing},
    CommandInfo{Command::QueryIrLaserDuty, "zr3DQueryDutioRatio", true, kNothing, Values(1)},
    CommandInfo{Command::SetLedWorkTime, "zr3DSetLedWorkTime", false, Values(2), kNothing},
    CommandInfo{Command::QueryLedWorkTime, "zr3DQueryLedWorkTime", false, Values(1), Values(1)},
    CommandInfo{Command::SetLaserLineWorkTime, "zr3DSetWorkTime", true, Values(1), kNothing},
    CommandInfo{Command::QueryLaserLineWorkTime, "zr3DQueryWorkTime", true, kNothing, Values(1)},
    CommandInfo{Command::SetProjectorWorkTime, "zr3DSetWorkTime", true, Values(1), kNothing},
    CommandInfo{Command::QueryProjectorWorkTime, "zr3DQueryWorkTime", true, kNothing, Values(1)},
    CommandInfo{Command::SetIrLaserWorkTime, "zr3DSetWorkTime", true, Values(1), kNothing},
    CommandInfo{Command::QueryIrLaserWorkTime, "zr3DQueryWorkTime", true, kNothing, Values(1)},
    CommandInfo{Command::WriteUserMemory, "zr3DWriteUserInfomation", false,
                PayloadShape{3, 0, kUserPart}, kNothing},
    CommandInfo{Command::ReadUserMemory, "zr3DReadUserInfomation", false, Values(2),
                PayloadShape{0, kUserPart, kUserPart}},
};

}  // namespace

bool PayloadShape::Fits(std::size_t size) const {
    const std::size_t least = values * 4 + leastBytes;
    return size >= least && size <= values * 4 + mostBytes;
}

std::span<const CommandInfo> AllCommands() {
    return kCommands;
}

const CommandInfo* FindCommand(Command command) {
    const auto* const found =
        std::find_if(kCommands.begin(), kCommands.end(),
                     [command](const CommandInfo& info) { return info.command == command; });
    return found == kCommands.end() ? nullptr : &*found;
}

const CommandInfo* FindSelected(std::string_view function, int selector) {
    const auto* const found =
        std::find_if(kCommands.begin(), kCommands.end(), [&](const CommandInfo& info) {
            return info.selected && static_cast<int>(info.command) == selector &&
                   info.function == function;
        });
    return found == kCommands.end() ? nullptr : &*found;
}

}  // namespace Korvex3Sync::board
