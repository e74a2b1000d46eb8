#pragma once

#include <gtest/gtest.h>

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <string>

#include "platform/link/wire/Frames.h"
#include "platform/link/wire/Messages.h"
#include "platform/os/Descriptors.h"

namespace Korvex3Sync::tests {

/// A local socket below the link, for peers that break its rules. Every wait has a deadline.
class RawSocket {
public:
    /// Not connected yet.
    RawSocket();
    /// What the system knows it by; owned from now on.
    explicit RawSocket(std::intptr_t reference);
    RawSocket(RawSocket&& other) noexcept;
    RawSocket& operator=(RawSocket&&) = delete;
    ~RawSocket();

    static RawSocket Connected(const std::string& path) {
        RawSocket socket;
        EXPECT_TRUE(socket.TryConnectTo(path)) << path << ": " << os::LastError().message();
        return socket;
    }
    bool TryConnectTo(const std::string& path);
    /// Connected, and introduced as a client.
    static RawSocket Introduced(const std::string& path) {
        RawSocket socket = Connected(path);
        socket.Send(link::Framed(link::Encoded(link::Hello{})));
        return socket;
    }
    static RawSocket Listening(const std::string& path);
    RawSocket Accept() const;

    /// False if the other end has closed the connection.
    bool Send(const QByteArray& bytes) const;
    /// The other end finds the end behind what was sent.
    void EndSending() const;

    /// The next message; nothing at the end of the connection.
    std::optional<link::Message> Receive() {
        while (true) {
            if (const auto bytes = m_frames.Next()) {
                return link::Decoded(*bytes);
            }
            const QByteArray bytes = ReceiveSome();
            if (bytes.isEmpty()) {
                return std::nullopt;
            }
            m_frames.Append(bytes);
        }
    }
    /// Waits until the other end closes the connection; true if it does before the deadline.
    bool WaitUntilClosed() const;

private:
    /// Empty at the end of the connection.
    QByteArray ReceiveSome() const;

    mutable std::intptr_t m_reference;
    link::FrameReader m_frames;
};

}  // namespace Korvex3Sync::tests
