#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::os {

CriticalSection::~CriticalSection() {
    Enter();
    Leave();
}

void CriticalSection::Enter() {
    m_mutex.lock();
    m_owner.store(std::this_thread::get_id(), std::memory_order_relaxed);
    ++m_depth;
}

void CriticalSection::Leave() {
    if (--m_depth == 0) {
        m_owner.store(std::thread::id{}, std::memory_order_relaxed);
    }
    m_mutex.unlock();
}

void CriticalSection::LeaveIfOwner() {
    if (OwnedByCaller()) {
        Leave();
    }
}

bool CriticalSection::OwnedByCaller() const {
    return m_owner.load(std::memory_order_relaxed) == std::this_thread::get_id();
}

}  // namespace Korvex3Sync::os
