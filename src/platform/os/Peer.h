#pragma once

#include <cstdint>
#include <optional>

namespace Korvex3Sync::os {

/// The process at the other end of a local socket.
struct Peer {
    long process = 0;
    bool sameUser = false;
};

/// Asks the system who is at the other end of an open socket. Nothing if the system cannot tell.
std::optional<Peer> PeerOf(std::intptr_t socket);

}  // namespace Korvex3Sync::os
