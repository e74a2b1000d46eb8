#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/os/CriticalSection.h"
#include "virtual_head/base/Export.h"
#include "virtual_head/faults/Presence.h"

namespace Korvex3Sync::virtual_head {

class Journal;

/// The faults of the board as a whole: it is gone, does not answer, or answers late. A fault that a
/// call gets is entered in the journal. Thread-safe; does not block.
class KORVEX_VIRTUAL_HEAD_API BoardFaults {
public:
    /// `journal` may be null.
    explicit BoardFaults(Journal* journal) : m_journal(journal) {}

    Presence& Plugged() { return m_plugged; }
    /// `opens`: the number of further opens for which it stays mute; 0: unlimited.
    void Mute(int opens);
    /// Ends the muteness; false if the board is not mute.
    bool Answer();
    /// The next `answers` answers take `extra` longer. Orders add up; the latest extra time
    /// applies.
    void Late(std::chrono::milliseconds extra, int answers);

    /// For the device side: whether a call reaches the board that was opened at `plug`.
    bool Reach(std::uint64_t plug, const std::string& call);
    /// The same for a call that needs no open board.
    bool Reach(const std::string& call);
    /// The same for an open: false if the board is gone. A success counts towards the opens of a
    /// mute board.
    bool Open(const std::string& call);
    /// Whether the board leaves this call without an answer.
    bool SaysNothing(const std::string& call);
    /// How much later the answer to this call goes out; nominal time.
    std::chrono::milliseconds Lateness(const std::string& call);

    std::vector<std::string> Unused() const;
    void Clear();

private:
    void Write(const char* fault, const std::string& call) const;

    Journal* const m_journal;
    Presence m_plugged;
    mutable os::Mutex m_mutex;
    bool m_mute KORVEX_GUARDED_BY(m_mutex) = false;
    bool m_muteUnmet KORVEX_GUARDED_BY(m_mutex) = false;
    bool m_opensLimited KORVEX_GUARDED_BY(m_mutex) = false;
    int m_opensLeft KORVEX_GUARDED_BY(m_mutex) = 0;
    int m_lateLeft KORVEX_GUARDED_BY(m_mutex) = 0;
    std::chrono::milliseconds m_extra KORVEX_GUARDED_BY(m_mutex){0};
};

}  // namespace Korvex3Sync::virtual_head
