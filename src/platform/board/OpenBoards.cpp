#include "platform/board/OpenBoards.h"

#include <cstdint>
#include <random>
#include <utility>

#include "platform/board/HidTransport.h"
#include "virtual_head/Request.h"

namespace Korvex3Sync::board {
namespace {

std::uint16_t AnyNumber() {
    return static_cast<std::uint16_t>(std::random_device{}());
}

}  // namespace

std::shared_ptr<BoardLink> OpenBoard(const BoardSelection& selection, Purpose purpose) {
    auto transport = virtual_head::MayUseRealDevices() ? HidTransport::Open(selection)
                                                       : VirtualTransport::Open(selection, purpose);
    return transport ? std::make_shared<BoardLink>(std::move(transport), AnyNumber()) : nullptr;
}

os::HandleTable<BoardLink>& OpenBoards() {
    // Never destroyed: other threads may still be in a call while the process ends.
    static auto* const boards = new os::HandleTable<BoardLink>;
    return *boards;
}

}  // namespace Korvex3Sync::board
