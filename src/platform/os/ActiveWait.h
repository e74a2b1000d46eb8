#pragma once

#include <chrono>

#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::os {

/// A short wait that keeps its core busy instead of sleeping. A core with nothing to do goes idle,
/// and waking it up can take longer than the work that the thread waits for.
///
/// Only one thread at a time waits actively; for any other, Wait returns at once. If active waits
/// keep ending in vain, because the work takes long or needs the same core, most are skipped.
class ActiveWait {
public:
    /// Twice what a call over the link takes with this wait: 53 us at the median, measured on an
    /// idle virtual machine with two cores.
    static constexpr std::chrono::microseconds kLongest{100};
    /// After each wait in vain more of the following ones are skipped: 1, 3, 7, up to this many.
    static constexpr int kMostLeftOut = 127;

    /// Returns once `done()` is true, after 100 us at the latest, or at once. If `done()` is still
    /// false, the caller has to wait in another way. `done` must be cheap and must not throw.
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
