#pragma once

#include <array>
#include <cstdint>

#include "platform/board/protocol/Codec.h"
#include "virtual_head/board/BoardState.h"
#include "virtual_head/config/HeadDescription.h"

namespace Korvex3Sync::virtual_head {

using UserMemory = std::array<std::uint8_t, 4096>;

/// Executes a command on the virtual board: changes the state or the user memory, or fills in the
/// reply. The payload must have the shape of the command. Numbers are stored unchecked.
/// VirtualBoard handles locks, faults and the journal.
board::Status RunCommand(const board::CommandMessage& message, const HeadDescription& description,
                         BoardState& state, UserMemory& memory, board::Payload& reply);

}  // namespace Korvex3Sync::virtual_head
