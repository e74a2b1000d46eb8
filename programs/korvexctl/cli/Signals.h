#pragma once

#include <functional>

namespace Korvex3Sync::korvexctl {

/// While it lives, the first Ctrl-C (or SIGTERM, or SIGHUP unless that is ignored) calls a
/// function, on a thread of its own, and the second Ctrl-C or SIGTERM ends the process at once with
/// exit code 130. The newest one in a process has the signals, and they count on from one to the
/// next; they end in the reverse order of their beginning.
class InterruptWatch {
public:
    /// Throws CommandError(Interrupted) within another one that has met a signal: what it was to
    /// watch over is not to begin.
    explicit InterruptWatch(std::function<void()> onInterrupt);
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

private:
    const std::function<void()> m_onInterrupt;
};

/// For commands that have no InterruptWatch of their own: while it lives, a signal makes
/// EndIfInterrupted throw. Not for two at a time.
class EndingOnInterrupt {
public:
    EndingOnInterrupt();
    ~EndingOnInterrupt();
    EndingOnInterrupt(const EndingOnInterrupt&) = delete;
    EndingOnInterrupt& operator=(const EndingOnInterrupt&) = delete;

private:
    InterruptWatch m_watch;
};

/// Whether a signal came to the EndingOnInterrupt that lives.
bool ToldToEnd();
/// Throws CommandError(Interrupted) when one did.
void EndIfInterrupted();

/// Writing to a closed pipe or past a file size limit fails with an error instead of ending the
/// process, so that a scan is ended cleanly. For the whole process.
void TurnWriteSignalsIntoErrors();

}  // namespace Korvex3Sync::korvexctl
