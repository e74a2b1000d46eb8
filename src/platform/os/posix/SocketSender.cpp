#include "platform/os/SocketSender.h"

#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace Korvex3Sync::os {
namespace {

/// -1 if the process has no descriptor left. In two steps, because the thread sanitizer follows
/// what is sent through a duplicate of dup3, but not of fcntl.
int Duplicate(int descriptor) {
    const int reserved = ::eventfd(0, EFD_CLOEXEC);
    if (reserved >= 0 && ::dup3(descriptor, reserved, O_CLOEXEC) < 0) {
        ::close(reserved);
        return -1;
    }
    return reserved;
}

}  // namespace

SocketSender::SocketSender(std::intptr_t socket) : m_socket(Duplicate(static_cast<int>(socket))) {}

SocketSender::~SocketSender() {
    if (m_socket >= 0) {
        ::close(static_cast<int>(m_socket));
    }
}

std::size_t SocketSender::Send(const char* bytes, std::size_t size) {
    ssize_t sent = 0;
    do {
        sent = ::send(static_cast<int>(m_socket), bytes, size, MSG_DONTWAIT | MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    return sent > 0 ? static_cast<std::size_t>(sent) : 0;
}

}  // namespace Korvex3Sync::os
