#include "virtual_head/TriggerClock.h"

#include <algorithm>
#include <stdexcept>

#include "platform/os/Clock.h"

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

TriggerClock::TriggerClock(bool color, const SensorSettings* sensors)
    : m_color(color), m_sensors(sensors) {
    if (!m_thread.Start([this] { Run(); })) {
        throw std::runtime_error("no thread for the trigger clock of the virtual head");
    }
}

TriggerClock::~TriggerClock() {
    {
        std::lock_guard lock(m_mutex);
        m_end = true;
        m_changed.notify_all();
    }
    m_thread.Join();
}

void TriggerClock::Apply(const BoardState& board, bool modeWritten) {
    std::lock_guard lock(m_mutex);
    const Kind before = KindOf(m_board.triggerMode);
    const Kind after = KindOf(board.triggerMode);
    const steady_clock::time_point last = m_next - Period();
    m_board = board;
    if (StartsTrigger(before, after)) {
        m_trigger = 0;
    }
    if (after == Kind::Running) {
        m_next = (before == Kind::Running ? last : steady_clock::now()) + Period();
    }
    if (after == Kind::Single && modeWritten && m_color) {
        GiveTrigger(false, true);
    }
    m_changed.notify_all();
}

void TriggerClock::Attach(const std::shared_ptr<ExposureQueue>& queue) {
    std::lock_guard lock(m_mutex);
    if (queue && std::find(m_queues.begin(), m_queues.end(), queue) == m_queues.end()) {
        m_queues.push_back(queue);
    }
}

void TriggerClock::Detach(const std::shared_ptr<ExposureQueue>& queue) {
    std::lock_guard lock(m_mutex);
    if (std::erase(m_queues, queue) > 0) {
        m_lostDetached += queue->Lost();
    }
}

std::uint64_t TriggerClock::Triggers() const {
    std::lock_guard lock(m_mutex);
    return m_total;
}

std::uint64_t TriggerClock::Lost() const {
    std::lock_guard lock(m_mutex);
    std::uint64_t lost = m_lostDetached;
    for (const auto& queue : m_queues) {
        lost += queue->Lost();
    }
    return lost;
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
        } else {
            GiveTrigger(true, m_color && GivesColor(m_board.triggerMode));
            m_next = (now - m_next > kMostLate ? now : m_next) + Period();
        }
    }
}

void TriggerClock::GiveTrigger(bool mono, bool color) {
    if (mono) {
        Hand(false);
    }
    if (color) {
        Hand(true);
    }
    ++m_trigger;
    ++m_total;
}

void TriggerClock::Hand(bool color) {
    Exposure exposure{m_trigger, static_cast<std::uint8_t>(m_trigger & 0xFFU), color, m_board, {}};
    if (m_sensors != nullptr) {
        exposure.sensors = m_sensors->Sensors();
    }
    for (const auto& queue : m_queues) {
        queue->Push(exposure);
    }
}

steady_clock::duration TriggerClock::Period() const {
    return os::Scaled(milliseconds(std::max(1, m_board.triggerPeriod)));
}

}  // namespace Korvex3Sync::virtual_head
