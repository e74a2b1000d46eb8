#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace Korvex3Sync::board {

/// The command codes. Any other code is a legal value of this type, but the board does not know it.
/// The codes of the duty-ratio and work-time commands are also the selectors that callers of the
/// board library pass.
enum class Command : std::uint8_t {
    QueryFirmwareVersionFast = 0x01,
    QueryFirmwareVersion = 0x02,
    ResetDevice = 0x03,
    ResetFpga = 0x04,
    QueryCurrentStatus = 0x05,
    EnableHeartbeat = 0x06,
    OpenOrCloseStrobeFlicker = 0x10,
    SetLaserEnable = 0x11,
    SetIrLaserEnable = 0x12,
    SetIrLaserLevel = 0x13,
    SetProjectorBrightness = 0x14,
    QueryProjectorBrightness = 0x15,
    Project = 0x16,
    SetDistanceIndicateState = 0x17,
    SetTriggerPeriod = 0x20,
    QueryTriggerPeriod = 0x21,
    SetTriggerMode = 0x22,
    SetLedDuty = 0x29,
    QueryLedDuty = 0x30,
    SetLaserLineDuty = 0x31,
    QueryLaserLineDuty = 0x32,
    SetProjectorDuty = 0x33,
    QueryProjectorDuty = 0x34,
    SetIrLaserDuty = 0x35,
    QueryIrLaserDuty = 0x36,
    SetLedWorkTime = 0x40,
    QueryLedWorkTime = 0x41,
    SetLaserLineWorkTime = 0x52,
    QueryLaserLineWorkTime = 0x53,
    SetProjectorWorkTime = 0x54,
    QueryProjectorWorkTime = 0x55,
    SetIrLaserWorkTime = 0x56,
    QueryIrLaserWorkTime = 0x57,
    WriteUserMemory = 0x60,
    ReadUserMemory = 0x61,
};

/// The user memory. Pages are read and written in parts of at most kUserPart bytes.
inline constexpr int kUserPageSize = 256;
inline constexpr int kUserPages = 16;
inline constexpr int kUserPart = 32;

/// The shape of a payload: a number of 32-bit values, then leastBytes to mostBytes bytes.
struct PayloadShape {
    std::size_t values = 0;
    std::size_t leastBytes = 0;
    std::size_t mostBytes = 0;

    bool Fits(std::size_t size) const;
};

/// One command of the protocol.
struct CommandInfo {
    Command command;
    /// The platform function that sends it.
    const char* function;
    /// Whether the caller passes the code, as the function's selector.
    bool selected;
    PayloadShape request;
    PayloadShape reply;
};

/// All commands, in the order of their codes.
std::span<const CommandInfo> AllCommands();
/// The command with this code; null if there is none.
const CommandInfo* FindCommand(Command command);
/// The command that `selector` names for this platform function; null if the function has no such
/// selector, so that a wrong number never becomes another command.
const CommandInfo* FindSelected(std::string_view function, int selector);

}  // namespace Korvex3Sync::board
