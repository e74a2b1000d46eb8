#include "platform/link/channel/Outlet.h"

#include <utility>

#include "platform/link/wire/Frames.h"

namespace Korvex3Sync::link {
namespace {

/// What a peer may leave unread of the messages that must not get lost.
constexpr qint64 kMostUnread = 8 * static_cast<qint64>(kMostMessageBytes);

}  // namespace

Outlet::Result Outlet::Send(const QByteArray& message, qint64 mostWaiting) {
    os::MutexGuard lock(m_mutex);
    return SendLocked(message, mostWaiting);
}

bool Outlet::SendOrFail(const QByteArray& message) {
    os::MutexGuard lock(m_mutex);
    const Result result = SendLocked(message, kMostUnread);
    m_overloaded = m_overloaded || (result == Result::Refused && m_socket);
    return result != Result::Sent;
}

Outlet::Result Outlet::SendLocked(const QByteArray& message, qint64 mostWaiting) {
    const qint64 unsent = m_waiting.size() + m_inSocket;
    if (!m_socket || unsent + message.size() > mostWaiting) {
        return Result::Refused;
    }
    const QByteArray frame = Framed(message);
    std::size_t sent = 0;
    if (unsent == 0) {
        sent = m_socket->Send(frame.constData(), static_cast<std::size_t>(frame.size()));
    }
    const int left = frame.size() - static_cast<int>(sent);
    m_waiting.append(frame.right(left));
    return left == 0 ? Result::Sent : Result::Waits;
}

void Outlet::Open(std::intptr_t socket) {
    os::MutexGuard lock(m_mutex);
    m_socket.emplace(socket);
}

void Outlet::Close() {
    os::MutexGuard lock(m_mutex);
    m_socket.reset();
}

QByteArray Outlet::TakeWaiting() {
    os::MutexGuard lock(m_mutex);
    m_inSocket += m_waiting.size();
    return std::exchange(m_waiting, QByteArray());
}

void Outlet::SetInSocket(qint64 bytes) {
    os::MutexGuard lock(m_mutex);
    m_inSocket = bytes;
}

bool Outlet::IsOverloaded() const {
    os::MutexGuard lock(m_mutex);
    return m_overloaded;
}

}  // namespace Korvex3Sync::link
