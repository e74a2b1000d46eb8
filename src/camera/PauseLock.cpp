#include "camera/PauseLock.h"

namespace Korvex3Sync {

void PauseLock::Take() {
    if (m_depth > 0 && m_owner == std::this_thread::get_id()) {
        ++m_depth;
        return;
    }
    const std::uint64_t ticket = m_nextTicket++;
    while (m_depth > 0 || m_served != ticket) {
        m_changed.Wait(m_mutex);
    }
    m_owner = std::this_thread::get_id();
    m_depth = 1;
}

void PauseLock::GiveBack() {
    if (--m_depth == 0) {
        m_owner = {};
        ++m_served;
        m_changed.NotifyAll();
    }
}

void PauseLock::Enter() {
    os::MutexGuard lock(m_mutex);
    Take();
}

void PauseLock::EnterOrJoinPause() {
    os::MutexGuard lock(m_mutex);
    if (m_pauseHold) {
        ++m_depth;
    } else {
        Take();
    }
}

void PauseLock::Leave() {
    os::MutexGuard lock(m_mutex);
    GiveBack();
}

void PauseLock::BeginPause() {
    os::MutexGuard lock(m_mutex);
    if (m_pauseHold) {
        return;
    }
    Take();
    m_pauseHold = true;
}

void PauseLock::EndPause() {
    os::MutexGuard lock(m_mutex);
    if (m_pauseHold) {
        m_pauseHold = false;
        GiveBack();
    }
}

bool PauseLock::Paused() const {
    os::MutexGuard lock(m_mutex);
    return m_pauseHold;
}

}  // namespace Korvex3Sync
