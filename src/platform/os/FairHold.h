#pragma once

#include <cstdint>
#include <thread>

#include "platform/os/Condition.h"

namespace Korvex3Sync::os {

/// Who holds a recursive lock, and who is next: threads get it in the order in which they asked.
/// Part of a lock, whose mutex guards it and is held only while this changes.
class FairHold {
public:
    /// Waits for the caller's turn; a holder goes one level deeper at once.
    void Take(Mutex& guard) KORVEX_REQUIRES(guard);
    /// One level deeper, on behalf of the holder. Only while there is one.
    void Join() { ++m_depth; }
    /// Leaves one level; the last one lets the next thread in.
    void GiveBack();
    bool HeldByCaller() const;

private:
    Condition m_changed;
    std::thread::id m_owner;
    int m_depth = 0;
    std::uint64_t m_nextTicket = 0;
    std::uint64_t m_served = 0;
};

}  // namespace Korvex3Sync::os
