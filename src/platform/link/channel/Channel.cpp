#include "platform/link/channel/Channel.h"

#include <algorithm>
#include <chrono>

#include "platform/os/Clock.h"
#include "platform/os/Peer.h"
#include "platform/os/Process.h"

namespace Korvex3Sync::link {
namespace {

/// How long the other end may take to introduce itself.
constexpr std::chrono::milliseconds kHelloLimit{1'000};
constexpr qint64 kReadAtOnce = 65'536;

}  // namespace

int TimerInterval(std::chrono::milliseconds nominal) {
    const auto real = std::chrono::ceil<std::chrono::milliseconds>(os::Scaled(nominal));
    return static_cast<int>(std::max<long long>(real.count(), 1));
}

Channel::Channel(std::unique_ptr<QLocalSocket> socket, Role own, Role expected, Events events)
    : m_socket(std::move(socket)), m_own(own), m_expected(expected), m_events(std::move(events)) {
    m_frames.Limit(kHelloBytes);
    m_helloLimit.setSingleShot(true);
    connect(&m_helloLimit, &QTimer::timeout, this,
            [this] { Fail("no first message within the limit"); });
    m_helloLimit.start(TimerInterval(kHelloLimit));
    connect(m_socket.get(), &QLocalSocket::readyRead, this, &Channel::OnReadable);
    connect(m_socket.get(), &QLocalSocket::connected, this, &Channel::OnConnected);
    connect(m_socket.get(), &QLocalSocket::bytesWritten, this,
            [this] { m_outlet->SetInSocket(m_socket->bytesToWrite()); });
    connect(m_socket.get(), &QLocalSocket::errorOccurred, this, &Channel::OnLost);
    connect(m_socket.get(), &QLocalSocket::disconnected, this, &Channel::OnLost);
}

void Channel::OnConnected() {
    const std::optional<os::Peer> peer = os::PeerOf(m_socket->socketDescriptor());
    if (!peer || !peer->sameUser) {
        return Fail("the other end belongs to another user");
    }
    m_process = peer->process;
    m_identified = true;
    m_outlet->Open(m_socket->socketDescriptor());
    Send(Encoded(Hello{kProtocolVersion, m_own, os::CurrentProcess()}));
    OnReadable();
}

void Channel::Send(const QByteArray& message) {
    if (m_outlet->SendOrFail(message)) {
        Flush();
    }
}

void Channel::Flush() {
    if (m_closed) {
        return;
    }
    const QByteArray waiting = m_outlet->TakeWaiting();
    if (!waiting.isEmpty()) {
        m_socket->write(waiting);
        m_socket->flush();
        m_outlet->SetInSocket(m_socket->bytesToWrite());
    }
    if (m_outlet->IsOverloaded()) {
        Fail("the other end does not read");
    }
}

void Channel::OnLost() {
    OnReadable();  // what arrived before the end
    if (m_frames.InMessage()) {
        Fail("the connection ended in the middle of a message");
    } else if (m_identified) {
        Fail("");
    } else {
        Fail(m_socket->errorString().toStdString());
    }
}

void Channel::Close() {
    if (!m_closed) {
        Silence();
        m_socket->abort();
    }
}

void Channel::Silence() {
    m_closed = true;
    m_outlet->Close();
    m_helloLimit.stop();
    m_socket->disconnect(this);
}

void Channel::OnReadable() {
    while (m_identified && !m_closed) {
        if (const std::optional<ByteSpan> message = m_frames.Next()) {
            const std::string fault = Take(*message);
            if (!fault.empty()) {
                Fail(fault);
            }
            continue;
        }
        if (!m_frames.Fault().empty()) {
            return Fail(m_frames.Fault());
        }
        const QByteArray bytes = m_socket->read(kReadAtOnce);
        if (bytes.isEmpty()) {
            return;
        }
        m_frames.Append(bytes);
    }
}

std::string Channel::Take(ByteSpan bytes) {
    if (!m_ready) {
        return TakeHello(bytes);
    }
    std::optional<Message> message = Decoded(bytes);
    return message ? m_events.message(*message) : "a malformed message";
}

std::string Channel::TakeHello(ByteSpan bytes) {
    const std::optional<Message> message = Decoded(bytes);
    const Hello* const hello = message ? std::get_if<Hello>(&*message) : nullptr;
    if (hello == nullptr) {
        return "the first message is not a greeting of this protocol";
    }
    if (hello->version != kProtocolVersion) {
        return "the other end has protocol version " + std::to_string(hello->version) +
               ", this one has " + std::to_string(kProtocolVersion);
    }
    if (hello->role != m_expected) {
        return std::string("the other end is a ") + RoleName(hello->role) + " instead of a " +
               RoleName(m_expected);
    }
    m_ready = true;
    m_helloLimit.stop();
    m_frames.Limit(kMostMessageBytes);
    m_events.ready(m_process);
    return "";
}

void Channel::Fail(const std::string& fault) {
    if (!m_closed) {
        Silence();
        m_events.closed(fault);
        m_socket->abort();
    }
}

}  // namespace Korvex3Sync::link
