#pragma once

#include <cstdint>

#include "platform/os/CriticalSection.h"

namespace Korvex3Sync {

/// Tells from the trigger modes that are written to the board when a run of the trigger starts, and
/// whether the mode gives colour frames. Modes are the board's numbers. Safe between the thread
/// that writes (one at a time) and the grab threads that read; never blocks for long.
class TriggerStarts {
public:
    struct Run {
        std::uint64_t starts = 0;  // grows with each start
        std::uint64_t anew = 0;    // the start with which nothing before counts any more
        bool givesColor = false;   // each mono frame is followed by a colour frame
    };

    /// The board is about to be told this mode. A start counts from here on, since its first frame
    /// may come before the board's answer.
    void Writing(int mode);
    /// It accepted the mode, or not: then its trigger may be in any mode.
    void Written(bool accepted);
    /// Whether the trigger runs is not known any more: the next write of a running mode counts as a
    /// start. For a reset of the board, which ends the run; from any thread, also beside a write.
    void ForgetState();
    /// The board was opened anew: it may have lost its power, or its trigger may have run all the
    /// time. So keys go on from anywhere, and the next write of a running mode, which either starts
    /// the trigger or changes nothing, is no start of its own.
    void StartAnew();

    Run Current() const;

private:
    enum class State { Unknown, Anew, Off, Single, Running };
    static State StateOf(int mode);

    mutable os::Mutex m_mutex;
    Run m_run KORVEX_GUARDED_BY(m_mutex);
    State m_state KORVEX_GUARDED_BY(m_mutex) = State::Unknown;
    int m_asked KORVEX_GUARDED_BY(m_mutex) = 0;
    bool m_colorBefore KORVEX_GUARDED_BY(m_mutex) = false;
};

}  // namespace Korvex3Sync
