#pragma once

#include <QTimer>

#include <functional>
#include <memory>
#include <string>

#include "platform/link/Client.h"
#include "platform/link/channel/Channel.h"
#include "platform/link/channel/IoLoop.h"

namespace Korvex3Sync::link {

/// Keeps a client connected, on the thread of its IoLoop: finds the service through the hub, and
/// tries again after each failure and each loss.
class ClientConnection {
public:
    struct Events {
        std::function<void()> trying;  ///< an attempt has started
        std::function<void()> failed;  ///< it has failed; the next one follows
        /// Messages can be sent.
        std::function<void(const std::shared_ptr<Outlet>&)> connected;
        std::function<void()> lost;  ///< the connection has ended; an attempt follows
        std::function<std::string(Message&)> message;
    };

    ClientConnection(IoLoop& loop, Client::Target target, Events events);
    ~ClientConnection();
    ClientConnection(const ClientConnection&) = delete;
    ClientConnection& operator=(const ClientConnection&) = delete;

    /// Takes over what waits in the outlet of the connection.
    void Flush();
    /// Ends the connection for a fault of the other end.
    void Drop(const std::string& reason);

private:
    void Try();
    void ConnectHub();
    void AskHub();
    std::string TakeHubAnswer(const Message& message);
    void ConnectTarget(const QString& path, Role role);
    void Open(const QString& path, Role role, Channel::Events events);
    void Fail(const std::string& reason);
    void EndChannel();
    const char* TargetName() const;

    IoLoop& m_loop;
    const Client::Target m_target;
    const Events m_events;
    QTimer m_next;
    QTimer m_attemptLimit;
    std::unique_ptr<Channel> m_channel;  // to the hub, then to the target
    bool m_connected = false;
    std::string m_lastReason;  // a failure that repeats is logged once
};

}  // namespace Korvex3Sync::link
