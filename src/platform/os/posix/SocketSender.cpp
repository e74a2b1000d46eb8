#include "platform/os/SocketSender.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace Korvex3Sync::os {

SocketSender::SocketSender(std::intptr_t socket)
    : m_socket(::fcntl(static_cast<int>(socket), F_DUPFD_CLOEXEC, 0)) {}

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
