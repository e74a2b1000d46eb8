#pragma once

#include <chrono>

#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::os {

/// Saves short waits the way into sleep and back: a core that has nothing to do goes idle, and then
/// wakes up slower than the work that it waits for takes.
///
/// One thread at a time waits actively; others are told to sleep at once. Where active waits bring
/// nothing, because what they wait for takes long or needs the same core, most are left out.
class ActiveWait {
public:
    /// Twice what a call over the link takes with this wait: 53 us at the median, measured on an
    /// idle virtual machine with two cores.
    static constexpr std::chrono::microseconds kLongest{100};
    /// After waits in vain in a row 1, 3, 7, ... up to this many are left out.
    static constexpr int kMostLeftOut = 127;

    /// Uses the processor until `done()` is true, for at most 100 us; perhaps not at all. A caller
    /// that goes on waiting sleeps. `done` must be cheap and must not throw.
    template <class Done>
    void Wait(Done done) {
        if (!m_mutex.TryLock()) {
            return;
        }
        if (m_leftOut < m_inVain) {
            ++m_leftOut;
        } else {
            const auto end = std::chrono::steady_clock::now() + kLongest;
            bool isDone = done();
            // Without yielding: beside a busy thread that would last a whole time slice.
            while (!isDone && std::chrono::steady_clock::now() < end) {
                isDone = done();
            }
            Count(isDone);
        }
        m_mutex.Unlock();
    }

private:
    void Count(bool isDone) KORVEX_REQUIRES(m_mutex);

    Mutex m_mutex;
    int m_inVain KORVEX_GUARDED_BY(m_mutex) = 0;   // waits to leave out after waits in vain
    int m_leftOut KORVEX_GUARDED_BY(m_mutex) = 0;  // those already left out
};

}  // namespace Korvex3Sync::os
