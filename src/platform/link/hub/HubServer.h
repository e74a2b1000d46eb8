#pragma once

#include <chrono>
#include <functional>
#include <map>
#include <string>

#include "platform/link/HubOperations.h"
#include "platform/link/Server.h"
#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::link {

/// The hub: tells clients where services are. It knows a service for as long as the service keeps
/// its connection. Its socket is in the runtime folder of the user; one process at a time may
/// listen there, which the caller ensures with a lock.
class HubServer {
public:
    /// `stop` is called, on another thread, when somebody asks the hub to end.
    HubServer(QString version, std::function<void()> stop);

    /// Opens the socket. False, with a reason, if that fails.
    bool Listen(std::string& reason);
    /// Ends all connections.
    void Close();

private:
    RETSTATUS Register(ClientId client, const Registration& registration);
    RETSTATUS LookUp(const QString& service, Registration& found);
    void Forget(ClientId client);
    HubState State();

    const QString m_version;
    const std::function<void()> m_stop;
    const std::chrono::steady_clock::time_point m_start = std::chrono::steady_clock::now();
    os::Mutex m_mutex;
    /// By connection. The newest one of a name counts.
    std::map<ClientId, Registration> m_services KORVEX_GUARDED_BY(m_mutex);
    std::unique_ptr<Server> m_server;
};

}  // namespace Korvex3Sync::link
