#pragma once

#include <QLocalSocket>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/link/channel/Outlet.h"
#include "platform/link/wire/Frames.h"
#include "platform/link/wire/Messages.h"

namespace Korvex3Sync::link {

/// A nominal time for a QTimer, in milliseconds.
int TimerInterval(std::chrono::milliseconds nominal);

/// One end of a connection, on the thread of an IoLoop. It checks who the other end is, exchanges
/// the first messages within a limit, and closes the connection at the first message that is not
/// one. Its owner may close it in any of its events, but must delete it after them
/// (IoLoop::DeleteLater).
class Channel : public QObject {
public:
    struct Events {
        /// The other end has introduced itself; `process` is what the system says.
        std::function<void(long process)> ready;
        /// A message after that. A text refuses it and closes the channel.
        std::function<std::string(Message&)> message;
        /// The channel is closed, for a fault, or without one by the other end. No event follows.
        std::function<void(const std::string& fault)> closed;
    };

    /// Takes over a socket. No event before Start or Connect.
    Channel(std::unique_ptr<QLocalSocket> socket, Role own, Role expected, Events events);

    /// Starts with a socket that is connected.
    void Start() { OnConnected(); }
    /// Connects the socket to one of the file system.
    void Connect(const QString& path) { m_socket->connectToServer(path); }

    /// Where any thread sends messages. It works while the channel is open.
    const std::shared_ptr<Outlet>& Out() const { return m_outlet; }
    /// Sends a message.
    void Send(const QByteArray& message);
    /// Takes over what waits in the outlet.
    void Flush();
    /// Closes without an event.
    void Close();

private:
    void OnConnected();
    void OnReadable();
    void OnLost();
    /// Empty if the message is taken, else why not.
    std::string Take(ByteSpan bytes);
    std::string TakeHello(ByteSpan bytes);
    void Fail(const std::string& fault);
    void Silence();

    const std::unique_ptr<QLocalSocket> m_socket;
    const std::shared_ptr<Outlet> m_outlet = std::make_shared<Outlet>();
    const Role m_own;
    const Role m_expected;
    const Events m_events;
    FrameReader m_frames;
    QTimer m_helloLimit;
    long m_process = 0;
    bool m_identified = false;  // the system has said who is at the other end
    bool m_ready = false;
    bool m_closed = false;
};

}  // namespace Korvex3Sync::link
