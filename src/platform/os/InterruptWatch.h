#pragma once

#include <functional>

namespace Korvex3Sync::os {

/// Handles interrupts of the process while it exists. The first one (Ctrl-C, SIGTERM, or SIGHUP
/// unless it was ignored at the start) calls a function on a separate thread. The second Ctrl-C or
/// SIGTERM ends the process at once with `exitCode`. A second SIGHUP does nothing.
///
/// Watches nest: the newest one gets the interrupts, the count continues from one to the next, and
/// they must end in the reverse order of their creation.
class InterruptWatch {
public:
    /// Throws std::system_error if a pipe or thread cannot be created.
    InterruptWatch(std::function<void()> onInterrupt, int exitCode);
    /// Waits for a running call of the function.
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

    /// False if the enclosing watch had already received an interrupt. Then this one watches
    /// nothing, and the work that it was created for should not begin.
    bool Watches() const { return m_watches; }

private:
    const std::function<void()> m_onInterrupt;
    const bool m_watches;
};

/// Makes writing to a closed pipe, or beyond a file size limit, fail with an error instead of
/// ending the process. Affects the whole process.
void TurnWriteSignalsIntoErrors();

}  // namespace Korvex3Sync::os
