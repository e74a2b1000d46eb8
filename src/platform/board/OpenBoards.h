#pragma once

#include <memory>

#include "platform/board/BoardLink.h"
#include "platform/board/VirtualTransport.h"
#include "platform/os/HandleTable.h"

namespace Korvex3Sync::board {

/// Opens the board that is meant through the first transport that has it. Null when none has.
std::shared_ptr<BoardLink> OpenBoard(const BoardSelection& selection, Purpose purpose);

/// The boards that this process holds open.
os::HandleTable<BoardLink>& OpenBoards();

}  // namespace Korvex3Sync::board
