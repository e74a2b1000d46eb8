#include "platform/os/Peer.h"

#include <sys/socket.h>
#include <unistd.h>

namespace Korvex3Sync::os {

std::optional<Peer> PeerOf(std::intptr_t socket) {
    ucred credentials{};
    socklen_t size = sizeof(credentials);
    if (::getsockopt(static_cast<int>(socket), SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) {
        return std::nullopt;
    }
    return Peer{credentials.pid, credentials.uid == ::geteuid()};
}

}  // namespace Korvex3Sync::os
