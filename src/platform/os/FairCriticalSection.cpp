#include "platform/os/FairCriticalSection.h"

namespace Korvex3Sync::os {

FairCriticalSection::~FairCriticalSection() {
    Enter();
    Leave();
}

void FairCriticalSection::Enter() {
    MutexGuard lock(m_mutex);
    m_hold.Take(m_mutex);
}

void FairCriticalSection::Leave() {
    MutexGuard lock(m_mutex);
    m_hold.GiveBack();
}

}  // namespace Korvex3Sync::os
