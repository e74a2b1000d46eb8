#include "virtual_head/TriggerClock.h"

#include <algorithm>
#include <stdexcept>

#include "platform/os/Clock.h"
#include "virtual_head/faults/Faults.h"

namespace Korvex3Sync::virtual_head {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

enum class Kind { Off, Single, Running };

// A clock that is later than this (the process was stopped, the machine overloaded) starts afresh
// from now; a burst of everything that is due would only be lost in the cameras' buffers.
constexpr milliseconds kMostLate{100};

Kind KindOf(int mode) {
    switch (mode) {
        case 1:
        case 2:
        case 3:
        case 6:
            return Kind::Running;
        case 4:
            return Kind::Single;
        default:
            return Kind::Off;
    }
}

bool GivesColor(int mode) {
    return mode == 3 || mode == 6;
}

bool StartsTrigger(Kind before, Kind after) {
    return (before != Kind::Running && after == Kind::Running) ||
           (before == Kind::Off && after == Kind::Single);
}

}  // namespace

TriggerClock::TriggerClock(bool color, Faults& faults, const SensorSettings* sensors)
    : m_color(color), m_faults(faults), m_sensors(sensors), m_output(faults.Frames()) {
    if (!m_thread.Start([this] { Run(); })) {
        throw std::runtime_error("no thread for the trigger clock of the virtual head");
    }
}

TriggerClock::~TriggerClock() {
    End();
}

void TriggerClock::End() {
    {
        std::lock_guard lock(m_mutex);
        m_end = true;
        m_changed.notify_all();
    }
    m_thread.Join();
}

void TriggerClock::Apply(const BoardState& board, bool modeWritten) {
    std::unique_lock lock(m_mutex);
    const Kind after = KindOf(board.triggerMode);
    const bool gives = after == Kind::Single && modeWritten && m_color;
    if (gives && m_power && !Announced()) {
        BeginDueFaults(lock);
    }
    if (!m_power) {
        return;
    }
    const Kind before = KindOf(m_board.triggerMode);
    const steady_clock::time_point last = m_next - Period();
    m_board = board;
    if (StartsTrigger(before, after)) {
        m_output.Start();
    } else if (after == Kind::Off || (before == Kind::Running && after == Kind::Single)) {
        m_output.ReleaseHeld();
    }
    if (after == Kind::Running) {
        m_next = (before == Kind::Running ? last : steady_clock::now()) + Period();
    }
    if (gives) {
        m_output.GiveTrigger(false, true, Moment());
    }
    m_changed.notify_all();
}

void TriggerClock::SetPower(bool on) {
    std::lock_guard lock(m_mutex);
    m_power = on;
    m_board = BoardState{};
    m_output.ReleaseHeld();
    m_changed.notify_all();
}

void TriggerClock::Attach(const std::shared_ptr<ExposureQueue>& queue) {
    std::lock_guard lock(m_mutex);
    m_output.Attach(queue);
}

void TriggerClock::Detach(const std::shared_ptr<ExposureQueue>& queue) {
    std::lock_guard lock(m_mutex);
    m_output.Detach(queue);
}

void TriggerClock::DetachAll() {
    std::lock_guard lock(m_mutex);
    m_output.DetachAll();
}

std::uint64_t TriggerClock::Triggers() const {
    std::lock_guard lock(m_mutex);
    return m_output.Triggers();
}

HeadCounts TriggerClock::Counts() const {
    std::lock_guard lock(m_mutex);
    return m_output.Counts();
}

std::uint64_t TriggerClock::Lost() const {
    std::lock_guard lock(m_mutex);
    return m_output.Lost();
}

void TriggerClock::Run() {
    std::unique_lock lock(m_mutex);
    while (!m_end) {
        const steady_clock::time_point now = steady_clock::now();
        if (KindOf(m_board.triggerMode) != Kind::Running) {
            m_changed.wait(lock);
        } else if (now < m_next) {
            const steady_clock::time_point next = m_next;
            m_changed.wait_until(lock, next);
        } else if (!Announced()) {
            BeginDueFaults(lock);
        } else {
            m_output.GiveTrigger(true, m_color && GivesColor(m_board.triggerMode), Moment());
            m_next = (now - m_next > kMostLate ? now : m_next) + Period();
        }
    }
}

Exposure TriggerClock::Moment() const {
    Exposure moment;
    moment.light = m_board;
    if (m_sensors != nullptr) {
        moment.sensors = m_sensors->Sensors();
    }
    return moment;
}

bool TriggerClock::Announced() const {
    return m_announced > m_output.Triggers();
}

// Without the lock: a fault may end the trigger that it comes with.
void TriggerClock::BeginDueFaults(std::unique_lock<std::mutex>& lock) {
    const std::uint64_t number = m_output.Triggers();
    const bool attended = m_output.Attended();
    m_announced = number + 1;
    lock.unlock();
    m_faults.Schedule().BeforeTrigger(number, attended);
    lock.lock();
}

steady_clock::duration TriggerClock::Period() const {
    return os::Scaled(milliseconds(std::max(1, m_board.triggerPeriod)));
}

}  // namespace Korvex3Sync::virtual_head
