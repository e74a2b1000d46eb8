#pragma once

#include <chrono>
#include <condition_variable>

#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::os {

/// Lets threads wait for a change of what a Mutex guards.
///
/// A wait releases the mutex and locks it again before it returns. It may return spuriously, so
/// call it in a loop that tests the condition; there the compiler's analysis sees the lock. A
/// deadline is a real time: `steady_clock::now() + Scaled(nominal)`.
class Condition {
public:
    void Wait(Mutex& mutex) KORVEX_REQUIRES(mutex);
    /// False if the deadline has passed.
    bool WaitUntil(Mutex& mutex, std::chrono::steady_clock::time_point deadline)
        KORVEX_REQUIRES(mutex);
    void NotifyOne() { m_changed.notify_one(); }
    void NotifyAll() { m_changed.notify_all(); }

private:
    std::condition_variable m_changed;
};

}  // namespace Korvex3Sync::os
