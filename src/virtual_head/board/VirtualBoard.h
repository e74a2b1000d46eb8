#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>

#include "platform/board/protocol/Report.h"
#include "platform/os/CriticalSection.h"
#include "virtual_head/base/Export.h"
#include "virtual_head/board/BoardState.h"
#include "virtual_head/config/HeadDescription.h"

namespace Korvex3Sync::virtual_head {

class Faults;
class Journal;

/// The firmware of the virtual board: takes command reports, keeps the state, answers with reply
/// reports. It knows bytes only, so that a test with it runs the real encoding. Thread-safe.
class KORVEX_VIRTUAL_HEAD_API VirtualBoard {
public:
    /// Called after each change of trigger mode or period, with the state after it, outside the
    /// board's lock; `modeWritten` tells that the mode was written (also with the same value).
    using TriggerChanged = std::function<void(const BoardState&, bool modeWritten)>;

    VirtualBoard(const HeadDescription& description, Journal& journal, Faults& faults,
                 TriggerChanged triggerChanged);

    /// Executes one command report and gives the reply report; nothing when the board does not
    /// answer (a report that it cannot read, a board that is mute, or one that vanished meanwhile).
    /// Blocks as long as a fault that was ordered for the command lets it. The journal gets one
    /// entry for each call of a platform function, also when it takes several reports.
    std::optional<board::Report> Execute(const board::Report& command);

    BoardState State() const;
    /// The board lost its power and what it held, but for the user memory. What runs in it now
    /// changes nothing any more.
    void PowerOff();
    /// The board is as it was when it was switched on. Calls `powered` when no change of the
    /// trigger from before is on its way.
    void PowerOn(const std::function<void()>& powered);
    void SetStatus(std::uint8_t first, std::uint8_t second);
    const HeadDescription& Description() const { return m_description; }

private:
    std::uint64_t PowerCycles() const;

    const HeadDescription m_description;
    Journal& m_journal;
    Faults& m_faults;
    TriggerChanged m_triggerChanged;

    // Held over a change of the trigger and its announcement, so that announcements come in the
    // order of the changes. Taken before m_mutex.
    os::Mutex m_triggerMutex;
    mutable os::Mutex m_mutex;
    BoardState m_state KORVEX_GUARDED_BY(m_mutex);
    std::array<std::uint8_t, 4096> m_userMemory KORVEX_GUARDED_BY(m_mutex);
    std::uint64_t m_powerCycles KORVEX_GUARDED_BY(m_mutex) = 0;
};

}  // namespace Korvex3Sync::virtual_head
