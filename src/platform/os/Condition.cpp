#include "platform/os/Condition.h"

namespace Korvex3Sync::os {

void Condition::Wait(Mutex& mutex) {
    std::unique_lock lock(mutex.m_mutex, std::adopt_lock);
    m_changed.wait(lock);
    lock.release();
}

bool Condition::WaitUntil(Mutex& mutex, std::chrono::steady_clock::time_point deadline) {
    std::unique_lock lock(mutex.m_mutex, std::adopt_lock);
    const bool inTime = m_changed.wait_until(lock, deadline) == std::cv_status::no_timeout;
    lock.release();
    return inTime;
}

}  // namespace Korvex3Sync::os
