#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Thread.h"
#include "virtual_head/base/Export.h"
#include "virtual_head/faults/FaultOrder.h"

namespace Korvex3Sync::virtual_head {

class Journal;

/// Begins faults by themselves: with a trigger, at a time, or as a seeded generator draws. One
/// fault draws after the other, once a trigger each, so that equal triggers meet equal faults.
/// Thread-safe. `m_mutex` is not held while a fault begins.
class KORVEX_VIRTUAL_HEAD_API FaultSchedule {
public:
    /// Begins a fault; false when it cannot begin now.
    using Begin = std::function<bool(const FaultOrder&)>;

    /// `journal` may be null. `begin` may be called on any thread.
    FaultSchedule(Journal* journal, Begin begin) : m_journal(journal), m_begin(std::move(begin)) {}
    /// Ends.
    ~FaultSchedule();
    FaultSchedule(const FaultSchedule&) = delete;
    FaultSchedule& operator=(const FaultSchedule&) = delete;

    /// The time of the faults counts from now on; those at 0 begin before it returns. Once. Throws
    /// std::runtime_error when a thread is needed and there is none.
    void Start(const std::vector<TimedFault>& faults, std::uint64_t seed);
    /// The trigger of this number is about to be given: begins what is due. `attended`: a camera
    /// sees it.
    void BeforeTrigger(std::uint64_t number, bool attended);
    /// Begins a fault after this nominal time, as a consequence of another. False without a thread.
    bool After(std::chrono::milliseconds time, const FaultOrder& order);
    /// Begins no more. Waits for the fault that is beginning.
    void End();

    /// Faults that have not begun, as "lose-mono, times 1, at_trigger 100: not reached".
    std::vector<std::string> Unused() const;
    /// Forgets what has not begun; what follows from a fault that has stays.
    void Clear();

private:
    using Time = std::chrono::steady_clock::time_point;
    enum class State { Waiting, Drawing, Begun, Refused };
    struct Entry {
        TimedFault fault;
        State state = State::Waiting;
        bool drawn = false;    // a drawing fault that has begun at least once
        bool follows = false;  // of another fault
        std::optional<Time> due = std::nullopt;
    };

    void Run();
    /// Begins what is due at this time, in the order of its times.
    void BeginDue(Time until) KORVEX_REQUIRES(m_mutex);
    bool StartThread() KORVEX_REQUIRES(m_mutex);
    bool Draw(double chance) KORVEX_REQUIRES(m_mutex);
    /// Takes the due entry's turn; the fault that has to begin now, if any.
    std::optional<FaultOrder> Turn(Entry& entry);
    void BeginNow(std::size_t index, const FaultOrder& order) KORVEX_EXCLUDES(m_mutex);
    std::optional<std::size_t> NextTimed() const KORVEX_REQUIRES(m_mutex);

    Journal* const m_journal;
    const Begin m_begin;
    mutable os::Mutex m_mutex;
    os::Condition m_changed;
    std::vector<Entry> m_entries KORVEX_GUARDED_BY(m_mutex);
    std::mt19937_64 m_generator KORVEX_GUARDED_BY(m_mutex);
    bool m_end KORVEX_GUARDED_BY(m_mutex) = false;
    os::Thread m_thread;
};

}  // namespace Korvex3Sync::virtual_head
