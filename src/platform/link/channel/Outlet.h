#pragma once

#include <QByteArray>

#include <cstdint>
#include <optional>

#include "platform/os/CriticalSection.h"
#include "platform/os/SocketSender.h"

namespace Korvex3Sync::link {

/// Sends messages over a connection, in the order in which they come. The thread of the sender
/// hands them to the system, which saves a change of threads; what the system does not take at once
/// waits for the I/O thread. Thread-safe.
class Outlet {
public:
    enum class Result {
        Sent,    ///< the system has it
        Waits,   ///< the I/O thread has to take what waits
        Refused  ///< too much waits, or the outlet is closed
    };

    /// Refused if more than `mostWaiting` bytes would wait with this message.
    Result Send(const QByteArray& message, qint64 mostWaiting);
    /// The same for a message that must not get lost: if it is refused, the connection is
    /// overloaded for good. True if the I/O thread has something to do.
    bool SendOrFail(const QByteArray& message);

    // On the I/O thread.

    /// Messages that come earlier are refused.
    void Open(std::intptr_t socket);
    void Close();
    /// Bytes for the socket. From here on they count as bytes in the socket.
    QByteArray TakeWaiting();
    /// How many bytes the socket holds that the system has not taken.
    void SetInSocket(qint64 bytes);
    bool IsOverloaded() const;

private:
    Result SendLocked(const QByteArray& message, qint64 mostWaiting) KORVEX_REQUIRES(m_mutex);

    mutable os::Mutex m_mutex;
    std::optional<os::SocketSender> m_socket KORVEX_GUARDED_BY(m_mutex);
    QByteArray m_waiting KORVEX_GUARDED_BY(m_mutex);
    qint64 m_inSocket KORVEX_GUARDED_BY(m_mutex) = 0;
    bool m_overloaded KORVEX_GUARDED_BY(m_mutex) = false;
};

}  // namespace Korvex3Sync::link
