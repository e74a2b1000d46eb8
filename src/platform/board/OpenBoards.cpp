#include "platform/board/OpenBoards.h"

#include <utility>

namespace Korvex3Sync::board {

std::shared_ptr<BoardLink> OpenBoard(const BoardSelection& selection, Purpose purpose) {
    auto transport = VirtualTransport::Open(selection, purpose);
    return transport ? std::make_shared<BoardLink>(std::move(transport)) : nullptr;
}

os::HandleTable<BoardLink>& OpenBoards() {
    // Never destroyed: other threads may still be in a call while the process ends.
    static auto* const boards = new os::HandleTable<BoardLink>;
    return *boards;
}

}  // namespace Korvex3Sync::board
