#include "camera/PauseLock.h"

namespace Korvex3Sync {

void PauseLock::Take(std::unique_lock<std::mutex>& lock) {
    if (m_depth > 0 && m_owner == std::this_thread::get_id()) {
        ++m_depth;
        return;
    }
    const std::uint64_t ticket = m_nextTicket++;
    m_changed.wait(lock, [&] { return m_depth == 0 && m_served == ticket; });
    m_owner = std::this_thread::get_id();
    m_depth = 1;
}

void PauseLock::GiveBack() {
    if (--m_depth == 0) {
        m_owner = {};
        ++m_served;
        m_changed.notify_all();
    }
}

void PauseLock::Enter() {
    std::unique_lock lock(m_mutex);
    Take(lock);
}

void PauseLock::Leave() {
    std::lock_guard lock(m_mutex);
    GiveBack();
}

void PauseLock::BeginPause() {
    std::unique_lock lock(m_mutex);
    if (m_pauseHold) {
        return;
    }
    Take(lock);
    m_pauseHold = true;
}

void PauseLock::EndPause() {
    std::lock_guard lock(m_mutex);
    if (m_pauseHold) {
        m_pauseHold = false;
        GiveBack();
    }
}

bool PauseLock::Paused() const {
    std::lock_guard lock(m_mutex);
    return m_pauseHold;
}

}  // namespace Korvex3Sync
