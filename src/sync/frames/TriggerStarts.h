#pragma once

#include <cstdint>

#include "platform/os/CriticalSection.h"

namespace Korvex3Sync {

/// Detects from the trigger modes that are written to the board when a run of the trigger starts,
/// and whether the mode gives colour frames. Modes are the board's numbers. Thread-safe: one thread
/// at a time writes, the grab threads read. Never blocks for long.
class TriggerStarts {
public:
    struct Run {
        std::uint64_t starts = 0;          // incremented by each start
        std::uint64_t countsFrom = 0;      // missing keys count from this start on
        bool givesColor = false;           // each mono frame is followed by a colour frame
        std::uint64_t changes = 0;         // incremented by each change of givesColor
        std::uint64_t changesAtStart = 0;  // `changes` at the latest start
    };

    /// This mode is about to be written to the board. A start counts from here on, because its
    /// first frame may arrive before the board's answer.
    void Writing(int mode);
    /// Whether the board accepted the mode. If not, its trigger may be in any mode.
    void Written(bool accepted);
    /// For a reset of the board, which ends the run: the state of the trigger becomes unknown, and
    /// the next write of a running mode counts as a start. Any thread, also during a write.
    void ForgetState();
    /// The board was reopened. It may have lost power, or its trigger may have kept running, so the
    /// keys may continue from any number. The next write of a running mode either starts the
    /// trigger or changes nothing; it does not count as another start.
    void Restart();

    Run Current() const;

private:
    enum class State { Unknown, Restarted, Off, Single, Running };
    static State StateOf(int mode);

    mutable os::Mutex m_mutex;
    Run m_run KORVEX_GUARDED_BY(m_mutex);
    State m_state KORVEX_GUARDED_BY(m_mutex) = State::Unknown;
    int m_asked KORVEX_GUARDED_BY(m_mutex) = 0;
    bool m_starting KORVEX_GUARDED_BY(m_mutex) = false;  // the write is a start
    bool m_colorBefore KORVEX_GUARDED_BY(m_mutex) = false;
};

}  // namespace Korvex3Sync
