#pragma once

#include <functional>

namespace Korvex3Sync::os {

/// While it lives, the first interrupt of the process (Ctrl-C, SIGTERM, or SIGHUP unless that was
/// ignored at its start) calls a function, on a thread of its own, and the second Ctrl-C or SIGTERM
/// ends the process at once with `exitCode`. A second SIGHUP does nothing.
///
/// Watches nest: the newest one has the interrupts, the count goes on from one to the next, and
/// they end in the reverse order of their beginning.
class InterruptWatch {
public:
    /// Throws std::system_error when the system gives no pipe or thread.
    InterruptWatch(std::function<void()> onInterrupt, int exitCode);
    /// Waits for a call that is under way.
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

    /// False when an interrupt had come to the watch around this one before it began. It then
    /// watches nothing, and what it was to watch over should not begin.
    bool Watches() const { return m_watches; }

private:
    const std::function<void()> m_onInterrupt;
    const bool m_watches;
};

/// Writing to a closed pipe or past a file size limit fails with an error from now on instead of
/// ending the process. For the whole process.
void TurnWriteSignalsIntoErrors();

}  // namespace Korvex3Sync::os
