#pragma once

#include <memory>

#include "platform/board/BoardLink.h"
#include "platform/board/VirtualTransport.h"
#include "platform/os/HandleTable.h"

namespace Korvex3Sync::board {

/// Opens the selected board: that of the virtual head if one was requested, otherwise an attached
/// one. Null if there is none or it cannot be opened.
std::shared_ptr<BoardLink> OpenBoard(const BoardSelection& selection, Purpose purpose);

/// The boards that this process has open.
os::HandleTable<BoardLink>& OpenBoards();

}  // namespace Korvex3Sync::board
