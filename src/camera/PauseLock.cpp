#include "camera/PauseLock.h"

namespace Korvex3Sync {

void PauseLock::Enter() {
    os::MutexGuard lock(m_mutex);
    m_hold.Take(m_mutex);
}

void PauseLock::EnterOrJoinPause() {
    os::MutexGuard lock(m_mutex);
    if (m_pauseHold) {
        m_hold.Join();
    } else {
        m_hold.Take(m_mutex);
    }
}

void PauseLock::Leave() {
    os::MutexGuard lock(m_mutex);
    m_hold.GiveBack();
}

void PauseLock::BeginPause() {
    os::MutexGuard lock(m_mutex);
    if (m_pauseHold) {
        return;
    }
    m_hold.Take(m_mutex);
    m_pauseHold = true;
}

void PauseLock::EndPause() {
    os::MutexGuard lock(m_mutex);
    if (m_pauseHold) {
        m_pauseHold = false;
        m_hold.GiveBack();
    }
}

bool PauseLock::Paused() const {
    os::MutexGuard lock(m_mutex);
    return m_pauseHold;
}

}  // namespace Korvex3Sync
