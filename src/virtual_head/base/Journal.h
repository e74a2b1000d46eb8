#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/os/CriticalSection.h"
#include "virtual_head/base/Export.h"

namespace Korvex3Sync::virtual_head {

/// One command that the board received or one camera call, with its outcome.
struct JournalEntry {
    std::uint64_t sequence = 0;  // from 0, over the whole head
    std::string call;            // the platform function's name, for example "zr3DSetLaserEnable"
    std::string arguments;       // as text, separated by ", ", without the handle: "1, 2"
    std::string result;          // "true", "false" or the int as text
    std::thread::id thread;      // of the caller; for the board the thread that answers its link
    std::chrono::steady_clock::time_point time;  // of the first of the folded calls
    std::uint64_t count = 1;  // equal calls of one thread in a row are folded into one entry

    /// "zr3DSetLaserEnable(1, 2) = true"
    KORVEX_VIRTUAL_HEAD_API std::string Text() const;
};

/// What happened to the head, in order. A call that equals the latest one of its thread is counted
/// there and makes no entry of its own, also when other threads made entries in between. The calls
/// that a running stream makes for each frame (SnapShot, GetResolution, and the faults that they
/// meet) are counted at any equal one since the thread's latest other call, so that a long scan
/// does not push the rest out. Bounded: the oldest entries go first and are counted. Thread-safe.
class KORVEX_VIRTUAL_HEAD_API Journal {
public:
    static constexpr std::size_t kMostEntries = 20000;

    void Add(std::string call, std::string arguments, std::string result);
    /// The entry of a fault, under the call "fault". It folds as the calls of a stream do.
    void AddFault(std::string fault, std::string outcome) {
        Add("fault", std::move(fault), std::move(outcome));
    }
    std::vector<JournalEntry> Entries() const;
    /// Texts of the entries whose call is one of `calls` (all entries when empty), in order.
    std::vector<std::string> Texts(const std::vector<std::string>& calls = {}) const;
    /// Entries that went because the journal was full, since the head exists.
    std::uint64_t Dropped() const;
    /// Forgets the entries; the sequence goes on.
    void Clear();

private:
    /// Sequences of a thread's entries that an equal call is counted at, oldest first.
    using Open = std::vector<std::uint64_t>;

    JournalEntry* FindEqual(const Open& open, const JournalEntry& entry) KORVEX_REQUIRES(m_mutex);
    void ForgetThreadsWithoutEntries() KORVEX_REQUIRES(m_mutex);

    mutable os::Mutex m_mutex;
    std::deque<JournalEntry> m_entries KORVEX_GUARDED_BY(m_mutex);
    std::map<std::thread::id, Open> m_open KORVEX_GUARDED_BY(m_mutex);
    std::uint64_t m_next KORVEX_GUARDED_BY(m_mutex) = 0;
    std::uint64_t m_dropped KORVEX_GUARDED_BY(m_mutex) = 0;
};

}  // namespace Korvex3Sync::virtual_head
