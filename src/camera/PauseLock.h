#pragma once

#include <cstdint>
#include <thread>

#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"

namespace Korvex3Sync {

/// The lock between a grab thread and those who pause it. Recursive, and served in the order of
/// asking, so that a grab thread that snaps back to back cannot keep a caller out.
///
/// A pause is a hold that stays when the pausing call has returned. It can be ended by any thread
/// (the one that closes the cameras need not be the one that disconnects), and ending a pause never
/// takes away the hold of a grab thread. The pausing thread itself may enter again.
class KORVEX_CAPABILITY("pause lock") PauseLock {
public:
    void Enter() KORVEX_ACQUIRE();
    /// As Enter, but enters at once during a pause, made by any thread. For callers that pause,
    /// never for a grab thread. The lock stays taken until this hold ends too.
    void EnterOrJoinPause() KORVEX_ACQUIRE();
    /// Only for the thread that entered.
    void Leave() KORVEX_RELEASE();

    /// Waits for the lock and keeps it as a pause. Nothing happens while a pause stands.
    void BeginPause() KORVEX_EXCLUDES(this);
    /// Ends the pause, if there is one.
    void EndPause();
    bool Paused() const;

private:
    void Take() KORVEX_REQUIRES(m_mutex);
    void GiveBack() KORVEX_REQUIRES(m_mutex);

    mutable os::Mutex m_mutex;
    os::Condition m_changed;
    std::thread::id m_owner KORVEX_GUARDED_BY(m_mutex);
    int m_depth KORVEX_GUARDED_BY(m_mutex) = 0;
    bool m_pauseHold KORVEX_GUARDED_BY(m_mutex) = false;
    std::uint64_t m_nextTicket KORVEX_GUARDED_BY(m_mutex) = 0;
    std::uint64_t m_served KORVEX_GUARDED_BY(m_mutex) = 0;
};

/// Keeps the grab thread out for a scope: with a hold of its own, or with the pause that stands.
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
