#include "device_service/core/DeviceOwner.h"

#include <random>
#include <utility>

#include "device_service/core/ServiceLog.h"
#include "platform/os/Clock.h"

namespace Korvex3Sync::device_service {

namespace {

constexpr std::chrono::milliseconds kWaitForClosing{2000};
/// A host that is started again may be faster than the news of its end.
constexpr std::chrono::milliseconds kWaitForEnd{300};

/// Ids of one service begin at a random multiple of 2^32, so that the ids of an earlier service are
/// not met again.
std::int64_t FirstId() {
    std::random_device random;
    constexpr std::uint32_t kBelow = 0x40000000;
    return static_cast<std::int64_t>(1 + random() % kBelow) << 32;
}

}  // namespace

DeviceOwner::DeviceOwner(Open open) : m_open(std::move(open)), m_lastId(FirstId()) {}

DeviceOwner::~DeviceOwner() {
    {
        const os::MutexGuard guard(m_mutex);
        m_end = true;
        m_changed.NotifyAll();
    }
    m_thread.Join();
}

bool DeviceOwner::Start() {
    return m_thread.Start([this] { CloseAbandoned(); });
}

bool DeviceOwner::Close(std::chrono::milliseconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + os::Scaled(limit);
    const os::MutexGuard guard(m_mutex);
    m_end = true;
    m_changed.NotifyAll();
    while (m_state != State::Free) {
        if (!m_changed.WaitUntil(m_mutex, deadline) && m_state != State::Free) {
            return false;
        }
    }
    return true;
}

void DeviceOwner::Came(ClientId client, long process) {
    KORVEX_LOG(kServiceLog) << "client " << process << " came";
    const os::MutexGuard guard(m_mutex);
    m_clients[client] = process;
}

void DeviceOwner::Gone(ClientId client) {
    const os::MutexGuard guard(m_mutex);
    const auto found = m_clients.find(client);
    if (found != m_clients.end()) {
        KORVEX_LOG(kServiceLog) << "client " << found->second << " is gone";
        m_clients.erase(found);
    }
    m_changed.NotifyAll();
}

bool DeviceOwner::Claim(ClientId client) {
    const auto now = std::chrono::steady_clock::now();
    const auto ownerDeadline = now + os::Scaled(kWaitForEnd);
    const auto deadline = now + os::Scaled(kWaitForClosing);
    const os::MutexGuard guard(m_mutex);
    while (true) {
        const auto found = m_clients.find(client);
        if (m_end || found == m_clients.end()) {
            return false;
        }
        const long process = found->second;  // the entry may go during a wait
        if (m_state == State::Free) {
            m_state = State::Opening;
            m_owner = client;
            m_ownerProcess = process;
            return true;
        }
        if (m_state != State::Closing && m_owner != client) {
            if (m_changed.WaitUntil(m_mutex, ownerDeadline)) {
                continue;
            }
            KORVEX_LOG_ERROR(kServiceLog) << "client " << process << " may not connect: client "
                                          << m_ownerProcess << " has the device";
            return false;
        }
        if (m_state == State::Open) {
            KORVEX_LOG(kServiceLog) << "client " << process << " connects again";
            CloseDevice();
        } else if (!m_changed.WaitUntil(m_mutex, deadline)) {
            KORVEX_LOG_ERROR(kServiceLog)
                << "client " << process << " cannot connect yet: the device of client "
                << m_ownerProcess << " is still being "
                << (m_state == State::Closing ? "closed" : "opened");
            return false;
        }
    }
}

std::int64_t DeviceOwner::NextId() {
    return ++m_lastId;
}

RETSTATUS DeviceOwner::Connect(ClientId client, const std::string& type, std::int64_t& id) {
    if (!Claim(client)) {
        return STATUS_FAILED;
    }
    std::int64_t newId = 0;
    {
        const os::MutexGuard guard(m_mutex);
        newId = NextId();
    }
    RETSTATUS status = STATUS_FAILED;
    std::unique_ptr<Device> device = m_open(type, newId, client, status);
    const os::MutexGuard guard(m_mutex);
    if (!device) {
        m_state = State::Free;
        m_changed.NotifyAll();
        return status;
    }
    m_state = State::Open;
    m_device = std::move(device);
    m_type = type;
    m_id = newId;
    m_changed.NotifyAll();
    KORVEX_LOG(kServiceLog) << "client " << m_ownerProcess << " has connected the device, id "
                            << newId;
    id = newId;
    return STATUS_SUCCESS;
}

RETSTATUS DeviceOwner::Disconnect(ClientId client, std::int64_t id) {
    const os::MutexGuard guard(m_mutex);
    if (m_state != State::Open || m_owner != client || m_id != id) {
        return STATUS_NOT_CONNECTED;
    }
    CloseDevice();
    return STATUS_SUCCESS;
}

void DeviceOwner::CloseDevice() {
    m_state = State::Closing;
    m_id = 0;
    std::unique_ptr<Device> device = std::move(m_device);
    {
        const os::MutexRelease release(m_mutex);
        device->Disconnect();
    }
    while (m_calls > 0) {
        m_changed.Wait(m_mutex);
    }
    {
        const os::MutexRelease release(m_mutex);
        device.reset();
    }
    KORVEX_LOG(kServiceLog) << "the device of client " << m_ownerProcess << " is closed";
    m_state = State::Free;
    m_changed.NotifyAll();
}

void DeviceOwner::CloseAbandoned() {
    const os::MutexGuard guard(m_mutex);
    while (!m_end || m_state != State::Free) {
        if (m_state == State::Open && (m_end || !m_clients.contains(m_owner))) {
            CloseDevice();
        } else {
            m_changed.Wait(m_mutex);
        }
    }
}

DeviceOwner::Use DeviceOwner::DeviceOf(ClientId client, std::int64_t id) {
    const os::MutexGuard guard(m_mutex);
    const bool owned = m_state == State::Open && m_owner == client && m_id == id;
    m_calls += owned ? 1 : 0;
    return {*this, owned ? m_device.get() : nullptr};
}

DeviceOwner::Use DeviceOwner::AnyDevice() {
    const os::MutexGuard guard(m_mutex);
    m_calls += m_device ? 1 : 0;
    return {*this, m_device.get()};
}

bool DeviceOwner::IsOthers(ClientId client) {
    const os::MutexGuard guard(m_mutex);
    return m_state != State::Free && m_owner != client;
}

std::optional<DeviceOwner::Owner> DeviceOwner::CurrentOwner() {
    const os::MutexGuard guard(m_mutex);
    if (m_state != State::Open) {
        return std::nullopt;
    }
    return Owner{m_id, m_ownerProcess, m_type};
}

void DeviceOwner::Leave() {
    const os::MutexGuard guard(m_mutex);
    if (--m_calls == 0) {
        m_changed.NotifyAll();
    }
}

DeviceOwner::Use::~Use() {
    if (m_device != nullptr) {
        m_owner.Leave();
    }
}

}  // namespace Korvex3Sync::device_service
