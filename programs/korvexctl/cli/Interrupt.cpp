#include "korvexctl/cli/Interrupt.h"

#include <utility>

namespace Korvex3Sync::korvexctl {

namespace {

constexpr const char* kInterrupted = "interrupted";

// The state of the existing EndingOnInterrupt.
std::atomic<bool> s_came{false};

Outcome AsInterrupted(Outcome outcome) {
    if (outcome.code != ExitCode::Interrupted) {
        outcome.code = ExitCode::Interrupted;
        outcome.message = outcome.message.empty() ? "interrupted after the command had finished"
                                                  : "interrupted: " + outcome.message;
    }
    return outcome;
}

}  // namespace

Interrupt::Interrupt(std::function<std::string()> stop)
    : m_watch(
          [this, stop = std::move(stop)] {
              m_came = true;
              const std::string how = stop();
              if (!how.empty()) {
                  Say("interrupted; " + how + "; press Ctrl-C again to quit now");
              }
          },
          static_cast<int>(ExitCode::Interrupted)) {
    if (!m_watch.Watches()) {
        throw CommandError(ExitCode::Interrupted, kInterrupted);
    }
}

void Interrupt::ThrowIfCame(const std::string& message) const {
    if (m_came) {
        throw CommandError(ExitCode::Interrupted, message);
    }
}

Outcome Interrupt::OutcomeOf(const std::function<Outcome()>& run) const {
    Outcome outcome = korvexctl::OutcomeOf(run);
    return m_came ? AsInterrupted(std::move(outcome)) : outcome;
}

EndingOnInterrupt::EndingOnInterrupt()
    : m_interrupt([] {
          s_came = true;
          return std::string("stopping after the current operation");
      }) {}

EndingOnInterrupt::~EndingOnInterrupt() {
    s_came = false;
}

bool InterruptCame() {
    return s_came;
}

void EndIfInterrupted() {
    if (s_came) {
        throw CommandError(ExitCode::Interrupted, kInterrupted);
    }
}

}  // namespace Korvex3Sync::korvexctl
