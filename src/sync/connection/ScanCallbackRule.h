#pragma once

#include "platform/os/CriticalSection.h"

namespace Korvex3Sync {

// A scan callback runs with the locks of its grab thread held. A board operation in it can
// deadlock: it waits for a reconnection or a close that in turn waits for this grab thread. Builds
// with KORVEX_CHECKS report it with an ERROR record; other builds do not check. The address of the
// device lock identifies a connection.

/// While it exists, it marks this thread as running a scan callback of the connection.
class InScanCallback {
public:
    explicit InScanCallback(const void* connection);
    ~InScanCallback();
    InScanCallback(const InScanCallback&) = delete;
    InScanCallback& operator=(const InScanCallback&) = delete;

private:
    [[maybe_unused]] const void* m_previous = nullptr;
};

/// Call it before an operation of the connection waits.
void CheckNotInScanCallback(const void* connection);

/// Holds the device lock of a connection for a scope. Checks before it waits, because the wait may
/// never end. A thread that already holds the lock does not wait and is not checked.
class KORVEX_SCOPED_CAPABILITY DeviceGuard {
public:
    explicit DeviceGuard(os::CriticalSection& device) KORVEX_ACQUIRE(device) : m_device(device) {
        if (!device.OwnedByCaller()) {
            CheckNotInScanCallback(&device);
        }
        device.Enter();
    }
    ~DeviceGuard() KORVEX_RELEASE() { m_device.Leave(); }
    DeviceGuard(const DeviceGuard&) = delete;
    DeviceGuard& operator=(const DeviceGuard&) = delete;

private:
    os::CriticalSection& m_device;
};

}  // namespace Korvex3Sync
