#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace Korvex3Sync::os {

/// Result of a wait, with the numbers that the system's own waits use in log lines.
enum class WaitResult : unsigned long { Signalled = 0, TimedOut = 0x102 };

/// Manual-reset event, unsignalled at first. Safe between threads.
class Event {
public:
    void Set();
    void Reset();
    bool IsSet() const;
    /// Blocks until the event is signalled, at most for the nominal limit.
    WaitResult Wait(std::chrono::milliseconds nominalLimit);
    /// The same until a real time: `steady_clock::now() + Scaled(nominal)`.
    WaitResult WaitUntil(std::chrono::steady_clock::time_point deadline);
    /// Blocks until the event is signalled.
    void Wait();

private:
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_set = false;
};

}  // namespace Korvex3Sync::os
