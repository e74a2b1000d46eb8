#include "virtual_head/TriggerClock.h"

#include <algorithm>
#include <stdexcept>

#include "platform/include/BoardFacts.h"
#include "virtual_head/faults/Faults.h"

namespace Korvex3Sync::virtual_head {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

using hardware::TriggerRun;

// If the clock is later than this (the process was stopped, the machine is overloaded), it restarts
// from now. A burst of all due triggers would only overflow the cameras' buffers.
constexpr milliseconds kMostLate{100};

bool StartsTrigger(TriggerRun before, TriggerRun after) {
    return (before != TriggerRun::Running && after == TriggerRun::Running) ||
           (before == TriggerRun::Off && after == TriggerRun::Single);
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
        os::MutexGuard lock(m_mutex);
        m_end = true;
        m_changed.NotifyAll();
    }
    m_thread.Join();
}

void TriggerClock::Apply(const BoardState& board, bool modeWritten) {
    os::MutexGuard lock(m_mutex);
    const TriggerRun after = hardware::RunOf(board.triggerMode);
    const bool gives = after == TriggerRun::Single && modeWritten && m_color;
    if (gives && m_power && !Announced()) {
        BeginDueFaults();
    }
    if (!m_power) {
        return;
    }
    const TriggerRun before = hardware::RunOf(m_board.triggerMode);
    const steady_clock::time_point last = m_next - Period();
    m_board = board;
    if (StartsTrigger(before, after)) {
        m_output.Start();
    } else if (after == TriggerRun::Off ||
               (before == TriggerRun::Running && after == TriggerRun::Single)) {
        m_output.ReleaseHeld();
    }
    if (after == TriggerRun::Running) {
        m_next = (before == TriggerRun::Running ? last : steady_clock::now()) + Period();
    }
    if (gives) {
        m_output.GiveTrigger(false, true, Moment());
    }
    m_changed.NotifyAll();
}

void TriggerClock::SetPower(bool on) {
    os::MutexGuard lock(m_mutex);
    m_power = on;
    m_board = BoardState{};
    m_output.ReleaseHeld();
    m_changed.NotifyAll();
}

void TriggerClock::Attach(const std::shared_ptr<ExposureQueue>& queue) {
    os::MutexGuard lock(m_mutex);
    m_output.Attach(queue);
}

void TriggerClock::Detach(const std::shared_ptr<ExposureQueue>& queue) {
    os::MutexGuard lock(m_mutex);
    m_output.Detach(queue);
}

void TriggerClock::DetachAll() {
    os::MutexGuard lock(m_mutex);
    m_output.DetachAll();
}

std::uint64_t TriggerClock::Triggers() const {
    os::MutexGuard lock(m_mutex);
    return m_output.Triggers();
}

HeadCounts TriggerClock::Counts() const {
    os::MutexGuard lock(m_mutex);
    return m_output.Counts();
}

std::uint64_t TriggerClock::Lost() const {
    os::MutexGuard lock(m_mutex);
    return m_output.Lost();
}

void TriggerClock::Run() {
    os::MutexGuard lock(m_mutex);
    while (!m_end) {
        const steady_clock::time_point now = steady_clock::now();
        if (hardware::RunOf(m_board.triggerMode) != TriggerRun::Running) {
            m_changed.Wait(m_mutex);
        } else if (now < m_next) {
            m_changed.WaitUntil(m_mutex, m_next);
        } else if (!Announced()) {
            BeginDueFaults();
        } else {
            m_output.GiveTrigger(true, m_color && hardware::AddsColor(m_board.triggerMode),
                                 Moment());
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

void TriggerClock::BeginDueFaults() {
    const std::uint64_t number = m_output.Triggers();
    const bool attended = m_output.Attended();
    m_announced = number + 1;
    os::MutexRelease unlocked(m_mutex);
    m_faults.Schedule().BeforeTrigger(number, attended);
}

steady_clock::duration TriggerClock::Period() const {
    return milliseconds(std::max(1, m_board.triggerPeriod));
}

}  // namespace Korvex3Sync::virtual_head
