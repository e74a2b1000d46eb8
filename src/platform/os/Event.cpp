#include "platform/os/Event.h"

#include "platform/os/Clock.h"

namespace Korvex3Sync::os {

void Event::Set() {
    // Notified under the lock: a waiting thread may destroy the event as soon as it wakes.
    std::lock_guard lock(m_mutex);
    m_set = true;
    m_changed.notify_all();
}

void Event::Reset() {
    std::lock_guard lock(m_mutex);
    m_set = false;
}

WaitResult Event::Wait(std::chrono::milliseconds nominalLimit) {
    return WaitUntil(std::chrono::steady_clock::now() + Scaled(nominalLimit));
}

WaitResult Event::WaitUntil(std::chrono::steady_clock::time_point deadline) {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_until(lock, deadline, [this] { return IsSet(); }) ? WaitResult::Signalled
                                                                            : WaitResult::TimedOut;
}

void Event::Wait() {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return IsSet(); });
}

}  // namespace Korvex3Sync::os
