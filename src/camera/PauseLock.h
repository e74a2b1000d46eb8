#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>

#include "platform/os/ThreadSafety.h"

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
    /// Only for the thread that entered.
    void Leave() KORVEX_RELEASE();

    /// Waits for the lock and keeps it as a pause. Nothing happens while a pause stands.
    void BeginPause() KORVEX_EXCLUDES(this);
    /// Ends the pause, if there is one.
    void EndPause();
    bool Paused() const;

private:
    void Take(std::unique_lock<std::mutex>& lock);
    void GiveBack();

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::thread::id m_owner;
    int m_depth = 0;
    bool m_pauseHold = false;
    std::uint64_t m_nextTicket = 0;
    std::uint64_t m_served = 0;
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
