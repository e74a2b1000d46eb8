#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "korvexctl/cli/Outcome.h"
#include "platform/os/InterruptWatch.h"

namespace Korvex3Sync::korvexctl {

/// Handles Ctrl-C, SIGTERM and SIGHUP for a command while it exists: remembers the first signal;
/// the second ends the process at once with exit code 130. The newest object in a process gets the
/// signals (os::InterruptWatch).
class Interrupt {
public:
    /// `stop` makes the command stop. It runs on a separate thread and returns TEXT for the message
    /// "interrupted; TEXT; press Ctrl-C again to quit now" on standard error. There is no message
    /// for an empty text.
    ///
    /// Throws CommandError(Interrupted) if the enclosing object has already received a signal, so
    /// that the command does not begin.
    explicit Interrupt(std::function<std::string()> stop);

    bool Came() const { return m_came; }
    /// Throws CommandError(Interrupted) if a signal came.
    void ThrowIfCame(const std::string& message = "interrupted") const;
    /// Runs a command; after an interrupt its outcome is Interrupted, however it ended.
    Outcome OutcomeOf(const std::function<Outcome()>& run) const;

private:
    std::atomic<bool> m_came{false};
    const os::InterruptWatch m_watch;
};

/// The interrupt handling for commands without their own: after a signal, EndIfInterrupted throws.
/// One at a time.
class EndingOnInterrupt {
public:
    EndingOnInterrupt();
    ~EndingOnInterrupt();
    EndingOnInterrupt(const EndingOnInterrupt&) = delete;
    EndingOnInterrupt& operator=(const EndingOnInterrupt&) = delete;

    Outcome OutcomeOf(const std::function<Outcome()>& run) const {
        return m_interrupt.OutcomeOf(run);
    }

private:
    const Interrupt m_interrupt;
};

/// Whether the existing EndingOnInterrupt has received a signal.
bool InterruptCame();
/// Throws CommandError(Interrupted) if it has.
void EndIfInterrupted();

}  // namespace Korvex3Sync::korvexctl
