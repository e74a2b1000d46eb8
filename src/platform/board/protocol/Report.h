#pragma once

#include <array>
#include <cstdint>

namespace Korvex3Sync::board {

/// A HID report of the board, command or reply (docs/board-protocol.md).
inline constexpr std::size_t kReportSize = 64;
using Report = std::array<std::uint8_t, kReportSize>;

}  // namespace Korvex3Sync::board
