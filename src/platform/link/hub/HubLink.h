#pragma once

#include <functional>
#include <memory>

#include "platform/link/Client.h"
#include "platform/link/HubOperations.h"
#include "platform/os/Condition.h"
#include "platform/os/Thread.h"

namespace Korvex3Sync::link {

/// Keeps a service registered at the hub, also after the hub has restarted.
class HubLink {
public:
    /// `hubMissing` is called when no hub has been there for 300 ms, and again every 2 s until one
    /// is. It runs on a thread of this object and may start a hub; it must return.
    HubLink(Registration registration, std::function<void()> hubMissing);
    /// Ends the registration. Waits for `hubMissing`.
    ~HubLink();
    HubLink(const HubLink&) = delete;
    HubLink& operator=(const HubLink&) = delete;

    /// What a service of this process registers: its socket, this process and a new instance.
    static Registration RegistrationOf(const QString& service, const QString& socket);

private:
    void Run();
    void OnConnection(bool connected);
    /// Waits for the next connection. False at the end of this object.
    bool WaitForHub();
    /// Waits for a change; false at the deadline.
    bool WaitUntil(std::chrono::steady_clock::time_point deadline) KORVEX_REQUIRES(m_mutex);

    const Registration m_registration;
    const std::function<void()> m_hubMissing;
    os::Mutex m_mutex;
    os::Condition m_changed;
    bool m_ending KORVEX_GUARDED_BY(m_mutex) = false;
    bool m_connected KORVEX_GUARDED_BY(m_mutex) = false;
    bool m_unregistered KORVEX_GUARDED_BY(m_mutex) = true;  // since the last connection
    std::unique_ptr<Client> m_client;
    os::Thread m_thread;
};

}  // namespace Korvex3Sync::link
