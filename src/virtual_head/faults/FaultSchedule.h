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

/// Begins timed faults: with a trigger, at a time, or at random with a seeded generator. The faults
/// draw in a fixed order, once per trigger, so that the same triggers get the same faults.
/// Thread-safe. `m_mutex` is not held while a fault begins.
class KORVEX_VIRTUAL_HEAD_API FaultSchedule {
public:
    /// Begins a fault; false if it cannot begin now.
    using Begin = std::function<bool(const FaultOrder&)>;

    /// `journal` may be null. `begin` may be called on any thread.
    FaultSchedule(Journal* journal, Begin begin) : m_journal(journal), m_begin(std::move(begin)) {}
    /// Ends.
    ~FaultSchedule();
    FaultSchedule(const FaultSchedule&) = delete;
    FaultSchedule& operator=(const FaultSchedule&) = delete;

    /// From now on the time of the faults counts; faults at time 0 begin before this returns. Call
    /// it once. Throws std::runtime_error if a thread is needed but cannot be started.
    void Start(const std::vector<TimedFault>& faults, std::uint64_t seed);
    /// Begins the faults that are due with this trigger, before it is given. `attended`: a camera
    /// sees the trigger.
    void BeforeTrigger(std::uint64_t number, bool attended);
    /// Begins a fault after this nominal time, as a consequence of another one. False if there is
    /// no thread for it.
    bool After(std::chrono::milliseconds time, const FaultOrder& order);
    /// Begins no more faults. Waits for one that is beginning.
    void End();

    /// Faults that have not begun, as "lose-mono, times 1, at_trigger 100: not reached".
    std::vector<std::string> Unused() const;
    /// Cancels the faults that have not begun, except consequences of faults that have.
    void Clear();

private:
    using Time = std::chrono::steady_clock::time_point;
    enum class State { Waiting, Drawing, Begun, Refused };
    struct Entry {
        TimedFault fault;
        State state = State::Waiting;
        bool drawn = false;    // a drawing fault that has begun at least once
        bool follows = false;  // a consequence of another fault
        std::optional<Time> due = std::nullopt;
    };

    void Run();
    /// Begins what is due at this time, in the order of its times.
    void BeginDue(Time until) KORVEX_REQUIRES(m_mutex);
    bool StartThread() KORVEX_REQUIRES(m_mutex);
    bool Draw(double chance) KORVEX_REQUIRES(m_mutex);
    /// Processes a due entry; returns the fault to begin now, if any.
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
