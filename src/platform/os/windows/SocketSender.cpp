#include "platform/os/SocketSender.h"

namespace Korvex3Sync::os {

// A local socket is a named pipe, and writes to one that is opened for overlapped operations belong
// to its owner. So everything goes through the owner.

SocketSender::SocketSender(std::intptr_t socket) : m_socket(socket) {}

SocketSender::~SocketSender() = default;

std::size_t SocketSender::Send(const char*, std::size_t) {
    return 0;
}

}  // namespace Korvex3Sync::os
