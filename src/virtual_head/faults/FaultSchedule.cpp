#include "virtual_head/faults/FaultSchedule.h"

#include <stdexcept>

#include "platform/os/Clock.h"
#include "virtual_head/base/Journal.h"

namespace Korvex3Sync::virtual_head {

using std::chrono::steady_clock;

FaultSchedule::~FaultSchedule() {
    End();
}

void FaultSchedule::Start(const std::vector<TimedFault>& faults, std::uint64_t seed) {
    if (m_journal != nullptr && !faults.empty()) {
        m_journal->AddFault("seed " + std::to_string(seed), "begun");
    }
    const Time now = steady_clock::now();
    os::MutexGuard lock(m_mutex);
    m_generator.seed(seed);
    for (const TimedFault& fault : faults) {
        Entry entry;
        entry.fault = fault;
        if (fault.at) {
            entry.due = now + os::Scaled(*fault.at);
        }
        m_entries.push_back(std::move(entry));
    }
    // Not on the thread, so that no call can precede a fault at time 0.
    BeginDue(now);
    if (NextTimed() && !StartThread()) {
        throw std::runtime_error("no thread for the timed faults of the virtual head");
    }
}

void FaultSchedule::BeforeTrigger(std::uint64_t number, bool attended) {
    os::MutexGuard lock(m_mutex);
    for (std::size_t index = 0; index < m_entries.size() && !m_end; ++index) {
        Entry& entry = m_entries[index];
        const bool due = entry.fault.atTrigger ? number >= *entry.fault.atTrigger : !entry.due;
        std::optional<FaultOrder> order;
        if (entry.state == State::Waiting && due) {
            order = Turn(entry);
        }
        if (entry.state == State::Drawing && Draw(*entry.fault.chance) && attended) {
            order = entry.fault.order;
        }
        if (order) {
            os::MutexRelease unlocked(m_mutex);
            BeginNow(index, *order);
        }
    }
}

bool FaultSchedule::After(std::chrono::milliseconds time, const FaultOrder& order) {
    os::MutexGuard lock(m_mutex);
    if (m_end || !StartThread()) {
        return false;
    }
    Entry entry;
    entry.fault.order = order;
    entry.fault.at = time;
    entry.follows = true;
    entry.due = steady_clock::now() + os::Scaled(time);
    m_entries.push_back(std::move(entry));
    m_changed.NotifyAll();
    return true;
}

void FaultSchedule::End() {
    {
        os::MutexGuard lock(m_mutex);
        m_end = true;
        m_changed.NotifyAll();
    }
    m_thread.Join();
}

std::vector<std::string> FaultSchedule::Unused() const {
    os::MutexGuard lock(m_mutex);
    std::vector<std::string> unused;
    for (const Entry& entry : m_entries) {
        const std::string text = Text(entry.fault);
        if (entry.follows) {
            continue;
        }
        if (entry.state == State::Waiting) {
            unused.push_back(text + ": not reached");
        } else if (entry.state == State::Drawing && !entry.drawn) {
            unused.push_back(text + ": never drawn");
        } else if (entry.state == State::Refused) {
            unused.push_back(text + ": could not begin");
        }
    }
    return unused;
}

void FaultSchedule::Clear() {
    os::MutexGuard lock(m_mutex);
    for (Entry& entry : m_entries) {
        if (!entry.follows) {
            entry.state = State::Begun;
        }
    }
}

void FaultSchedule::Run() {
    os::MutexGuard lock(m_mutex);
    while (!m_end) {
        const std::optional<std::size_t> next = NextTimed();
        if (!next) {
            m_changed.Wait(m_mutex);
            continue;
        }
        const Time due = *m_entries[*next].due;
        if (steady_clock::now() < due) {
            m_changed.WaitUntil(m_mutex, due);
            continue;
        }
        BeginDue(due);
    }
}

void FaultSchedule::BeginDue(Time until) {
    for (auto next = NextTimed(); next && *m_entries[*next].due <= until && !m_end;
         next = NextTimed()) {
        if (const auto order = Turn(m_entries[*next])) {
            os::MutexRelease unlocked(m_mutex);
            BeginNow(*next, *order);
        }
    }
}

bool FaultSchedule::StartThread() {
    return m_thread.Started() || m_thread.Start([this] { Run(); });
}

// Computed here, because the results of the standard distributions depend on the implementation.
bool FaultSchedule::Draw(double chance) {
    constexpr double kUnit = 0x1.0p-53;
    return static_cast<double>(m_generator() >> 11U) * kUnit < chance;
}

std::optional<FaultOrder> FaultSchedule::Turn(Entry& entry) {
    if (entry.fault.chance) {
        entry.state = State::Drawing;
        return std::nullopt;
    }
    entry.state = State::Begun;
    return entry.fault.order;
}

void FaultSchedule::BeginNow(std::size_t index, const FaultOrder& order) {
    const bool begun = m_begin(order);
    std::string text;
    {
        // Entries are never removed, so the index stays valid.
        os::MutexGuard lock(m_mutex);
        Entry& entry = m_entries[index];
        text = Text(entry.fault);
        entry.drawn = entry.drawn || begun;
        if (!begun && entry.state == State::Begun) {
            entry.state = State::Refused;
        }
    }
    if (m_journal != nullptr) {
        m_journal->AddFault(text, begun ? "begun" : "refused");
    }
}

std::optional<std::size_t> FaultSchedule::NextTimed() const {
    std::optional<std::size_t> next;
    for (std::size_t index = 0; index < m_entries.size(); ++index) {
        const Entry& entry = m_entries[index];
        if (entry.state == State::Waiting && entry.due &&
            (!next || *entry.due < *m_entries[*next].due)) {
            next = index;
        }
    }
    return next;
}

}  // namespace Korvex3Sync::virtual_head
