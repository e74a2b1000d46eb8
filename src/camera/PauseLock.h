#pragma once

#include "platform/os/CriticalSection.h"
#include "platform/os/FairHold.h"

namespace Korvex3Sync {

/// The lock between a grab thread and the callers that pause it. It is recursive and serves threads
/// in the order in which they ask, so a grab thread that snaps without a break cannot keep a caller
/// out.
///
/// A pause is a hold that remains after the pausing call has returned. Any thread can end it: the
/// thread that closes the cameras may not be the one that disconnects. Ending a pause never
/// releases the hold of a grab thread. The pausing thread itself may enter again.
class KORVEX_CAPABILITY("pause lock") PauseLock {
public:
    void Enter() KORVEX_ACQUIRE();
    /// Like Enter, but enters at once during a pause, whichever thread made it. For callers that
    /// pause, never for a grab thread. The lock stays taken until this hold has ended, too.
    void EnterOrJoinPause() KORVEX_ACQUIRE();
    /// Only for the thread that entered.
    void Leave() KORVEX_RELEASE();

    /// Waits for the lock and keeps it as a pause. Does nothing during a pause.
    void BeginPause() KORVEX_EXCLUDES(this);
    /// Ends the pause, if there is one.
    void EndPause();
    bool Paused() const;

private:
    mutable os::Mutex m_mutex;
    os::FairHold m_hold KORVEX_GUARDED_BY(m_mutex);
    bool m_pauseHold KORVEX_GUARDED_BY(m_mutex) = false;
};

/// Keeps the grab thread out for a scope, with its own hold or together with a pause.
class KORVEX_SCOPED_CAPABILITY PauseJoinGuard {
public:
    explicit PauseJoinGuard(PauseLock& lock) KORVEX_ACQUIRE(lock) : m_lock(lock) {
        m_lock.EnterOrJoinPause();
    }
    ~PauseJoinGuard() KORVEX_RELEASE() { m_lock.Leave(); }
    PauseJoinGuard(const PauseJoinGuard&) = delete;
    PauseJoinGuard& operator=(const PauseJoinGuard&) = delete;

private:
    PauseLock& m_lock;
};

/// Holds a pause lock for a scope.
class KORVEX_SCOPED_CAPABILITY PauseLockGuard {
public:
    explicit PauseLockGuard(PauseLock& lock) KORVEX_ACQUIRE(lock) : m_lock(lock) { m_lock.Enter(); }
    ~PauseLockGuard() KORVEX_RELEASE() { m_lock.Leave(); }
    PauseLockGuard(const PauseLockGuard&) = delete;
    PauseLockGuard& operator=(const PauseLockGuard&) = delete;

private:
    PauseLock& m_lock;
};

}  // namespace Korvex3Sync
