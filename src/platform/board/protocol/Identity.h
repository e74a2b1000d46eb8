#pragma once

#include <cstdint>

namespace Korvex3Sync::board {

/// USB identifiers of the synchronization board.
inline constexpr std::uint16_t kVendorId = 0x3267;
inline constexpr std::uint16_t kProductId = 0x5752;

}  // namespace Korvex3Sync::board
