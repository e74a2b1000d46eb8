#pragma once

#include <functional>
#include <memory>

namespace Korvex3Sync::korvexctl {

/// While it lives, the first Ctrl-C (or SIGTERM) calls a function, on a thread of its own, and the
/// second ends the process at once with exit code 130. One at a time in a process.
class InterruptWatch {
public:
    explicit InterruptWatch(std::function<void()> onInterrupt);
    ~InterruptWatch();
    InterruptWatch(const InterruptWatch&) = delete;
    InterruptWatch& operator=(const InterruptWatch&) = delete;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

/// Writing to a closed pipe or past a file size limit fails with an error instead of ending the
/// process, so that a scan is ended cleanly. For the whole process.
void TurnWriteSignalsIntoErrors();

}  // namespace Korvex3Sync::korvexctl
