#include "link/RawSocket.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "support/Deadline.h"

namespace Korvex3Sync::tests {

namespace {

sockaddr_un AddressOf(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
    return address;
}

int Descriptor(std::intptr_t reference) {
    return static_cast<int>(reference);
}

bool IsDeadline(ssize_t got) {
    return got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
}

}  // namespace

RawSocket::RawSocket() : RawSocket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {}

RawSocket::RawSocket(std::intptr_t reference) : m_reference(reference) {
    const timeval limit{std::chrono::duration_cast<std::chrono::seconds>(kDeadline).count(), 0};
    ::setsockopt(Descriptor(m_reference), SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
}

RawSocket::RawSocket(RawSocket&& other) noexcept
    : m_reference(std::exchange(other.m_reference, -1)) {}

RawSocket::~RawSocket() {
    if (m_reference >= 0) {
        ::close(Descriptor(m_reference));
    }
}

bool RawSocket::TryConnectTo(const std::string& path) {
    const sockaddr_un address = AddressOf(path);
    return ::connect(Descriptor(m_reference), reinterpret_cast<const sockaddr*>(&address),
                     sizeof(address)) == 0;
}

RawSocket RawSocket::Listening(const std::string& path) {
    RawSocket socket;
    const sockaddr_un address = AddressOf(path);
    ::unlink(path.c_str());
    EXPECT_EQ(::bind(Descriptor(socket.m_reference), reinterpret_cast<const sockaddr*>(&address),
                     sizeof(address)),
              0);
    EXPECT_EQ(::listen(Descriptor(socket.m_reference), 50), 0);
    return socket;
}

RawSocket RawSocket::Accept() const {
    return RawSocket(::accept4(Descriptor(m_reference), nullptr, nullptr, SOCK_CLOEXEC));
}

bool RawSocket::Send(const QByteArray& bytes) const {
    const char* data = bytes.constData();
    auto left = static_cast<std::size_t>(bytes.size());
    while (left > 0) {
        const ssize_t sent = ::send(Descriptor(m_reference), data, left, MSG_NOSIGNAL);
        if (sent <= 0) {
            return false;
        }
        data += sent;
        left -= static_cast<std::size_t>(sent);
    }
    return true;
}

void RawSocket::EndSending() const {
    ::shutdown(Descriptor(m_reference), SHUT_WR);
}

QByteArray RawSocket::ReceiveSome() const {
    QByteArray bytes(64 * 1024, 0);
    const ssize_t got =
        ::recv(Descriptor(m_reference), bytes.data(), static_cast<std::size_t>(bytes.size()), 0);
    EXPECT_FALSE(IsDeadline(got)) << "deadline";
    bytes.truncate(got > 0 ? static_cast<int>(got) : 0);
    return bytes;
}

bool RawSocket::WaitUntilClosed() const {
    char bytes[4096];
    ssize_t got = 0;
    do {
        got = ::recv(Descriptor(m_reference), bytes, sizeof(bytes), 0);
    } while (got > 0);
    return !IsDeadline(got);
}

}  // namespace Korvex3Sync::tests
