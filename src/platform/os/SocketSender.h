#pragma once

#include <cstddef>
#include <cstdint>

namespace Korvex3Sync::os {

/// Sends through a connected local socket on other threads than that of its owner. Not thread-safe
/// in itself.
class SocketSender {
public:
    /// Shares the socket. The connection ends for the other end only after the owner has closed the
    /// socket and this object is gone.
    explicit SocketSender(std::intptr_t socket);
    ~SocketSender();
    SocketSender(const SocketSender&) = delete;
    SocketSender& operator=(const SocketSender&) = delete;

    /// Hands over what the system takes without waiting, and returns how many bytes that are. 0
    /// also after an error: the owner of the socket finds out about it.
    std::size_t Send(const char* bytes, std::size_t size);

private:
    std::intptr_t m_socket;
};

}  // namespace Korvex3Sync::os
