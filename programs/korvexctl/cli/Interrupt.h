#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "korvexctl/cli/Outcome.h"
#include "platform/os/InterruptWatch.h"

namespace Korvex3Sync::korvexctl {

/// How a command ends on Ctrl-C, SIGTERM or SIGHUP: while it lives, the first one is remembered,
/// and the second ends the process at once with exit code 130. The newest one in a process has the
/// signals (os::InterruptWatch).
class Interrupt {
public:
    /// `stop` makes the command stop. It runs on a separate thread and returns TEXT for the message
    /// "interrupted; TEXT; press Ctrl-C again to quit now" on standard error. There is no message
    /// for an empty text.
    ///
    /// Throws CommandError(Interrupted) when the one around it has met a signal already: its
    /// command is not to begin.
    explicit Interrupt(std::function<std::string()> stop);

    bool Came() const { return m_came; }
    /// Throws CommandError(Interrupted) when one came.
    void ThrowIfCame(const std::string& message = "interrupted") const;
    /// Runs a command; after an interrupt its outcome is Interrupted, however it ended.
    Outcome OutcomeOf(const std::function<Outcome()>& run) const;

private:
    std::atomic<bool> m_came{false};
    const os::InterruptWatch m_watch;
};

/// The interrupt of commands that have none of their own: once it came, EndIfInterrupted throws.
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

/// Whether a signal came to the EndingOnInterrupt that lives.
bool InterruptCame();
/// Throws CommandError(Interrupted) when one did.
void EndIfInterrupted();

}  // namespace Korvex3Sync::korvexctl
