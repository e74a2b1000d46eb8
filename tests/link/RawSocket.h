#pragma once

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <QByteArray>

#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "platform/link/wire/Frames.h"
#include "platform/link/wire/Messages.h"
#include "support/Deadline.h"

namespace Korvex3Sync::tests {

/// A local socket below the link, for peers that break its rules. Every wait has a deadline.
class RawSocket {
public:
    explicit RawSocket(int descriptor) : m_descriptor(descriptor) {
        const timeval limit{std::chrono::duration_cast<std::chrono::seconds>(kDeadline).count(), 0};
        ::setsockopt(m_descriptor, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
    }
    ~RawSocket() {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }
    RawSocket(RawSocket&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    RawSocket& operator=(RawSocket&&) = delete;

    static RawSocket Connected(const std::string& path) {
        RawSocket socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        EXPECT_TRUE(socket.TryConnectTo(path)) << path << ": " << std::strerror(errno);
        return socket;
    }
    bool TryConnectTo(const std::string& path) const {
        const sockaddr_un address = AddressOf(path);
        return ::connect(m_descriptor, reinterpret_cast<const sockaddr*>(&address),
                         sizeof(address)) == 0;
    }
    /// Connected, and introduced as a client.
    static RawSocket Introduced(const std::string& path) {
        RawSocket socket = Connected(path);
        socket.Send(link::Framed(link::Encoded(link::Hello{})));
        return socket;
    }
    static RawSocket Listening(const std::string& path) {
        RawSocket socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        const sockaddr_un address = AddressOf(path);
        ::unlink(path.c_str());
        EXPECT_EQ(::bind(socket.m_descriptor, reinterpret_cast<const sockaddr*>(&address),
                         sizeof(address)),
                  0);
        EXPECT_EQ(::listen(socket.m_descriptor, 50), 0);
        return socket;
    }
    RawSocket Accept() const {
        return RawSocket(::accept4(m_descriptor, nullptr, nullptr, SOCK_CLOEXEC));
    }

    /// False if the other end has closed the connection.
    bool Send(const QByteArray& bytes) const {
        const char* data = bytes.constData();
        auto left = static_cast<std::size_t>(bytes.size());
        while (left > 0) {
            const ssize_t sent = ::send(m_descriptor, data, left, MSG_NOSIGNAL);
            if (sent <= 0) {
                return false;
            }
            data += sent;
            left -= static_cast<std::size_t>(sent);
        }
        return true;
    }
    void EndSending() const { ::shutdown(m_descriptor, SHUT_WR); }

    /// The next message; nothing at the end of the connection.
    std::optional<link::Message> Receive() {
        while (true) {
            if (const auto bytes = m_frames.Next()) {
                return link::Decoded(*bytes);
            }
            QByteArray bytes(64 * 1024, 0);
            const ssize_t got =
                ::recv(m_descriptor, bytes.data(), static_cast<std::size_t>(bytes.size()), 0);
            EXPECT_FALSE(got < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) << "deadline";
            if (got <= 0) {
                return std::nullopt;
            }
            bytes.truncate(static_cast<int>(got));
            m_frames.Append(bytes);
        }
    }
    /// Waits until the other end closes the connection; true if it does before the deadline.
    bool WaitUntilClosed() const {
        char bytes[4096];
        ssize_t got = 0;
        do {
            got = ::recv(m_descriptor, bytes, sizeof(bytes), 0);
        } while (got > 0);
        return got == 0 || (errno != EAGAIN && errno != EWOULDBLOCK);
    }

private:
    static sockaddr_un AddressOf(const std::string& path) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
        return address;
    }

    int m_descriptor;
    link::FrameReader m_frames;
};

}  // namespace Korvex3Sync::tests
