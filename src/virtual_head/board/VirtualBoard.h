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

/// The virtual board: takes command reports, keeps the state and answers with reply reports. It
/// exchanges only bytes, so a test that uses it runs the real encoding. Thread-safe.
class KORVEX_VIRTUAL_HEAD_API VirtualBoard {
public:
    /// Called after each change of trigger mode or period, with the new state, outside the board's
    /// lock. `modeWritten`: the mode was written, possibly with the same value.
    using TriggerChanged = std::function<void(const BoardState&, bool modeWritten)>;

    VirtualBoard(const HeadDescription& description, Journal& journal, Faults& faults,
                 TriggerChanged triggerChanged);

    /// Executes a command report and returns the reply report. Returns nothing if the board does
    /// not answer: it cannot read the report, is mute, or was unplugged meanwhile. Blocks as long
    /// as a fault slows or hangs the command. The journal gets one entry for each call of a
    /// platform function, even if the call takes several reports.
    std::optional<board::Report> Execute(const board::Report& command);

    BoardState State() const;
    /// The board lost power and its state, except for the user memory. A command that is running
    /// now no longer changes anything.
    void PowerOff();
    /// Restores the power-on state. Calls `powered` when no earlier change of the trigger is
    /// pending.
    void PowerOn(const std::function<void()>& powered);
    void SetStatus(std::uint8_t first, std::uint8_t second);
    const HeadDescription& Description() const { return m_description; }

private:
    std::uint64_t PowerCycles() const;

    const HeadDescription m_description;
    Journal& m_journal;
    Faults& m_faults;
    TriggerChanged m_triggerChanged;

    // Held during a change of the trigger and its announcement, so that announcements are in the
    // order of the changes. Taken before m_mutex.
    os::Mutex m_triggerMutex;
    mutable os::Mutex m_mutex;
    BoardState m_state KORVEX_GUARDED_BY(m_mutex);
    std::array<std::uint8_t, 4096> m_userMemory KORVEX_GUARDED_BY(m_mutex);
    std::uint64_t m_powerCycles KORVEX_GUARDED_BY(m_mutex) = 0;
};

}  // namespace Korvex3Sync::virtual_head
