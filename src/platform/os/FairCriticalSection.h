#pragma once

#include "platform/os/CriticalSection.h"
#include "platform/os/FairHold.h"

namespace Korvex3Sync::os {

/// A recursive mutex that is served in the order of asking: a thread that enters it back to back
/// cannot keep another one out. Destruction waits until no holder is inside.
class KORVEX_CAPABILITY("fair critical section") FairCriticalSection {
public:
    FairCriticalSection() = default;
    ~FairCriticalSection();
    FairCriticalSection(const FairCriticalSection&) = delete;
    FairCriticalSection& operator=(const FairCriticalSection&) = delete;

    void Enter() KORVEX_ACQUIRE();
    /// Only for the owner.
    void Leave() KORVEX_RELEASE();

private:
    Mutex m_mutex;
    FairHold m_hold KORVEX_GUARDED_BY(m_mutex);
};

/// Holds a fair critical section for a scope.
class KORVEX_SCOPED_CAPABILITY FairCriticalSectionGuard {
public:
    explicit FairCriticalSectionGuard(FairCriticalSection& section) KORVEX_ACQUIRE(section)
        : m_section(section) {
        m_section.Enter();
    }
    ~FairCriticalSectionGuard() KORVEX_RELEASE() { m_section.Leave(); }
    FairCriticalSectionGuard(const FairCriticalSectionGuard&) = delete;
    FairCriticalSectionGuard& operator=(const FairCriticalSectionGuard&) = delete;

private:
    FairCriticalSection& m_section;
};

}  // namespace Korvex3Sync::os
