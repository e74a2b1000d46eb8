#pragma once

#include "platform/os/CriticalSection.h"

namespace Korvex3Sync {

// A scan callback runs with its grab thread's locks held, so a board operation in it can wait for a
// reconnection or a close that itself waits for this grab thread. Builds with KORVEX_CHECKS tell
// about it with one ERROR record; other builds do nothing here. A connection is known by the
// address of its device lock.

/// Marks, while it lives, that this thread runs a scan callback of the connection.
class InScanCallback {
public:
    explicit InScanCallback(const void* connection);
    ~InScanCallback();
    InScanCallback(const InScanCallback&) = delete;
    InScanCallback& operator=(const InScanCallback&) = delete;

private:
    [[maybe_unused]] const void* m_previous = nullptr;
};

/// To be called before an operation of the connection waits.
void CheckNotInScanCallback(const void* connection);

/// Holds the device lock of a connection for a scope. The check comes before the wait, which may
/// never end; a thread that holds the lock already waits for nothing.
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
