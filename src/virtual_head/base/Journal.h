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

/// A command that the board received or a camera call, with its result.
struct JournalEntry {
    std::uint64_t sequence = 0;  // from 0, for the whole head
    std::string call;            // the platform function's name, for example "zr3DSetLaserEnable"
    std::string arguments;       // as text, separated by ", ", without the handle: "1, 2"
    std::string result;          // "true", "false" or the int as text
    std::thread::id thread;      // of the caller; for the board the thread that serves its link
    std::chrono::steady_clock::time_point time;  // of the first of the folded calls
    std::uint64_t count = 1;  // consecutive equal calls of a thread are folded into one entry

    /// "zr3DSetLaserEnable(1, 2) = true"
    KORVEX_VIRTUAL_HEAD_API std::string Text() const;
};

/// What happened to the head, in order. A call that equals the latest one of its thread only
/// increments the count of that entry, even if other threads made entries in between. The calls
/// that a running stream makes for each frame (SnapShot, GetResolution, and their faults) are
/// counted at any equal one since the thread's latest other call, so a long scan does not push out
/// the other entries. Bounded: the oldest entries are dropped and counted. Thread-safe.
class KORVEX_VIRTUAL_HEAD_API Journal {
public:
    static constexpr std::size_t kMostEntries = 20000;

    void Add(std::string call, std::string arguments, std::string result);
    /// Adds a fault, as the call "fault". It is folded like the calls of a stream.
    void AddFault(std::string fault, std::string outcome) {
        Add("fault", std::move(fault), std::move(outcome));
    }
    std::vector<JournalEntry> Entries() const;
    /// Texts of the entries whose call is in `calls` (all entries if it is empty), in order.
    std::vector<std::string> Texts(const std::vector<std::string>& calls = {}) const;
    /// Entries dropped because the journal was full, since the head was created.
    std::uint64_t Dropped() const;
    /// Removes all entries; the sequence continues.
    void Clear();

private:
    /// Sequence numbers of the entries of a thread at which an equal call is counted, oldest first.
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
