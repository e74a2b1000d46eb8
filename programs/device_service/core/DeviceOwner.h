#pragma once

#include <Korvex3Sync/Status.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "device_service/core/Device.h"
#include "platform/link/Server.h"
#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Thread.h"

namespace Korvex3Sync::device_service {

/// Which client has the device. One client at a time owns it: from its connect until its disconnect
/// or its end. Only the owner's calls reach the device.
///
/// The lock is never held while the device is opened, used or closed. A device is closed by the
/// call that disconnects it; that of a client that is gone by a thread of this class. Its closing
/// ends the waits of calls that are inside, and then waits for them.
class DeviceOwner {
public:
    using ClientId = link::ClientId;
    /// Opens a device of a type for a client. Returns null and sets the status if that fails.
    using Open = std::function<std::unique_ptr<Device>(const std::string& type, std::int64_t id,
                                                       ClientId client, RETSTATUS& status)>;

    explicit DeviceOwner(Open open);
    /// Closes.
    ~DeviceOwner();
    DeviceOwner(const DeviceOwner&) = delete;
    DeviceOwner& operator=(const DeviceOwner&) = delete;

    /// False if the system provides no thread.
    bool Start();
    /// Refuses connects from now on and closes the device; false if that takes longer than the
    /// limit. The destructor waits without a limit.
    bool Close(std::chrono::milliseconds limit);

    /// A client is there: its connects are accepted until it is gone.
    void Came(ClientId client, long process);
    /// Does not wait.
    void Gone(ClientId client);

    /// Opens a device for the client and sets `id`. A device that the client has already is closed
    /// before. Gives 0 if another client has the device, after 0.3 s, or if a device is still being
    /// closed after 2 s.
    RETSTATUS Connect(ClientId client, const std::string& type, std::int64_t& id);
    /// Closes the device of the client; 6 for any other id.
    RETSTATUS Disconnect(ClientId client, std::int64_t id);

    /// The device of a client during one call. It is not destroyed before the call has ended.
    class Use {
    public:
        Use(DeviceOwner& owner, Device* device) : m_owner(owner), m_device(device) {}
        ~Use();
        Use(const Use&) = delete;
        Use& operator=(const Use&) = delete;

        explicit operator bool() const { return m_device != nullptr; }
        Device& operator*() const { return *m_device; }
        Device* operator->() const { return m_device; }

    private:
        DeviceOwner& m_owner;
        Device* const m_device;
    };
    /// Nothing if this is not the id of the client's device.
    Use DeviceOf(ClientId client, std::int64_t id);
    /// The connected device of any client.
    Use AnyDevice();
    /// Whether another client has the device or is getting it.
    bool IsOthers(ClientId client);

    struct Owner {
        std::int64_t id = 0;
        long process = 0;
        std::string type;
    };
    /// Nothing while no client has a connected device.
    std::optional<Owner> CurrentOwner();

private:
    enum class State { Free, Opening, Open, Closing };

    /// Makes the client the owner, for opening.
    bool Claim(ClientId client);
    std::int64_t NextId() KORVEX_REQUIRES(m_mutex);
    /// From Open to Free; releases the lock meanwhile.
    void CloseDevice() KORVEX_REQUIRES(m_mutex);
    void Leave();
    /// Closes what has no owner any more.
    void CloseAbandoned();

    const Open m_open;
    os::Mutex m_mutex;
    os::Condition m_changed;
    bool m_end KORVEX_GUARDED_BY(m_mutex) = false;
    /// The process of each client.
    std::map<ClientId, long> m_clients KORVEX_GUARDED_BY(m_mutex);
    State m_state KORVEX_GUARDED_BY(m_mutex) = State::Free;
    ClientId m_owner KORVEX_GUARDED_BY(m_mutex) = {};
    long m_ownerProcess KORVEX_GUARDED_BY(m_mutex) = 0;
    std::string m_type KORVEX_GUARDED_BY(m_mutex);
    std::int64_t m_id KORVEX_GUARDED_BY(m_mutex) = 0;  // 0 unless it is open
    std::int64_t m_lastId KORVEX_GUARDED_BY(m_mutex);
    std::unique_ptr<Device> m_device KORVEX_GUARDED_BY(m_mutex);
    int m_calls KORVEX_GUARDED_BY(m_mutex) = 0;
    os::Thread m_thread;
};

}  // namespace Korvex3Sync::device_service
