#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace Korvex3Sync::os {

/// Result of a wait. The numbers appear in log lines.
enum class WaitResult : unsigned long { Signalled = 0, TimedOut = 0x102 };

/// Manual-reset event, initially not signalled. Thread-safe.
class Event {
public:
    void Set();
    void Reset();
    /// Does not block.
    bool IsSet() const { return m_set; }
    /// Blocks until the event is signalled, but not longer than the nominal limit.
    WaitResult Wait(std::chrono::milliseconds nominalLimit);
    /// The same until a real time: `steady_clock::now() + Scaled(nominal)`.
    WaitResult WaitUntil(std::chrono::steady_clock::time_point deadline);
    /// Blocks until the event is signalled.
    void Wait();

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::atomic<bool> m_set = false;  // changes under the mutex
};

}  // namespace Korvex3Sync::os
