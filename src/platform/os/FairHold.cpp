#include "platform/os/FairHold.h"

namespace Korvex3Sync::os {

void FairHold::Take(Mutex& guard) {
    if (HeldByCaller()) {
        ++m_depth;
        return;
    }
    const std::uint64_t ticket = m_nextTicket++;
    while (m_served != ticket) {
        m_changed.Wait(guard);
    }
    m_owner = std::this_thread::get_id();
    m_depth = 1;
}

void FairHold::GiveBack() {
    if (--m_depth == 0) {
        m_owner = {};
        ++m_served;
        m_changed.NotifyAll();
    }
}

bool FairHold::HeldByCaller() const {
    return m_depth > 0 && m_owner == std::this_thread::get_id();
}

}  // namespace Korvex3Sync::os
