#pragma once

#include <atomic>
#include <mutex>
#include <thread>

#include "platform/os/ThreadSafety.h"

namespace Korvex3Sync::os {

/// A recursive mutex that knows its owner. The destructor waits until nobody holds it.
class KORVEX_CAPABILITY("critical section") CriticalSection {
public:
    CriticalSection() = default;
    ~CriticalSection();
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

    void Enter() KORVEX_ACQUIRE();
    /// Only for the owner.
    void Leave() KORVEX_RELEASE();
    /// Leaves once if the calling thread is the owner; otherwise does nothing.
    void LeaveIfOwner() KORVEX_NO_THREAD_SAFETY_ANALYSIS;
    bool OwnedByCaller() const;

private:
    std::recursive_mutex m_mutex;
    std::atomic<std::thread::id> m_owner{};
    int m_depth = 0;  // used by the owner only
};

/// Holds a critical section for a scope.
class KORVEX_SCOPED_CAPABILITY CriticalSectionGuard {
public:
    explicit CriticalSectionGuard(CriticalSection& section) KORVEX_ACQUIRE(section)
        : m_section(section) {
        m_section.Enter();
    }
    ~CriticalSectionGuard() KORVEX_RELEASE() { m_section.Leave(); }
    CriticalSectionGuard(const CriticalSectionGuard&) = delete;
    CriticalSectionGuard& operator=(const CriticalSectionGuard&) = delete;

private:
    CriticalSection& m_section;
};

/// A plain mutex that clang's analysis knows, for everything that needs no recursion.
class KORVEX_CAPABILITY("mutex") Mutex {
public:
    void Lock() KORVEX_ACQUIRE() { m_mutex.lock(); }
    bool TryLock() KORVEX_TRY_ACQUIRE(true) { return m_mutex.try_lock(); }
    void Unlock() KORVEX_RELEASE() { m_mutex.unlock(); }
    /// For std::condition_variable_any and std::unique_lock.
    void lock() KORVEX_ACQUIRE() { m_mutex.lock(); }
    void unlock() KORVEX_RELEASE() { m_mutex.unlock(); }

private:
    friend class Condition;
    std::mutex m_mutex;
};

/// Holds a mutex for a scope.
class KORVEX_SCOPED_CAPABILITY MutexGuard {
public:
    explicit MutexGuard(Mutex& mutex) KORVEX_ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.Lock(); }
    ~MutexGuard() KORVEX_RELEASE() { m_mutex.Unlock(); }
    MutexGuard(const MutexGuard&) = delete;
    MutexGuard& operator=(const MutexGuard&) = delete;

private:
    Mutex& m_mutex;
};

/// Releases a mutex for a scope, inside the scope of its guard.
class KORVEX_SCOPED_CAPABILITY MutexRelease {
public:
    explicit MutexRelease(Mutex& mutex) KORVEX_RELEASE(mutex) : m_mutex(mutex) { m_mutex.Unlock(); }
    ~MutexRelease() KORVEX_RELEASE() { m_mutex.Lock(); }
    MutexRelease(const MutexRelease&) = delete;
    MutexRelease& operator=(const MutexRelease&) = delete;

private:
    Mutex& m_mutex;
};

}  // namespace Korvex3Sync::os
