#pragma once

#include <chrono>
#include <condition_variable>

#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::os {

/// Where threads wait for a change of what a Mutex guards.
///
/// A wait gives the mutex up and holds it again when it returns. It may return without a cause, so
/// it stands in a loop that tests what is waited for, where the compiler's analysis sees the lock.
/// A deadline is a real time: `steady_clock::now() + Scaled(nominal)`.
class Condition {
public:
    void Wait(Mutex& mutex) KORVEX_REQUIRES(mutex);
    /// False when the deadline has passed.
    bool WaitUntil(Mutex& mutex, std::chrono::steady_clock::time_point deadline)
        KORVEX_REQUIRES(mutex);
    void NotifyOne() { m_changed.notify_one(); }
    void NotifyAll() { m_changed.notify_all(); }

private:
    std::condition_variable m_changed;
};

}  // namespace Korvex3Sync::os
