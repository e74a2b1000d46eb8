#pragma once

#include <array>
#include <cstdint>

#include "platform/board/protocol/Codec.h"
#include "virtual_head/board/BoardState.h"
#include "virtual_head/config/HeadDescription.h"

namespace Korvex3Sync::virtual_head {

using UserMemory = std::array<std::uint8_t, 4096>;

/// What the virtual board does on a command whose payload has the shape of that command: changes
/// the state or the user memory, or fills the reply. Every number is stored as it comes, as long as
/// there is a place for it. No locks, no faults, no journal: VirtualBoard sees to those.
board::Status RunCommand(const board::CommandMessage& message, const HeadDescription& description,
                         BoardState& state, UserMemory& memory, board::Payload& reply);

}  // namespace Korvex3Sync::virtual_head
