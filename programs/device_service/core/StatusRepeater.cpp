#include "device_service/core/StatusRepeater.h"

#include <algorithm>
#include <utility>

#include "platform/os/Clock.h"

namespace Korvex3Sync::device_service {

namespace {

constexpr std::chrono::milliseconds kRepeatPeriod{50};
/// A poll every 200 ms, up to 500 ms for the board's answer, and some delay.
constexpr std::chrono::milliseconds kFresh{1000};
/// Four polls without a callback.
constexpr std::chrono::milliseconds kSkippedPolls{800};

}  // namespace

StatusRepeater::StatusRepeater(Send send) : m_send(std::move(send)) {}

StatusRepeater::~StatusRepeater() {
    {
        const os::MutexGuard guard(m_mutex);
        m_end = true;
        m_changed.NotifyAll();
    }
    m_thread.Join();
}

bool StatusRepeater::Start() {
    return m_thread.Start([this] { Repeat(); });
}

void StatusRepeater::Polled(unsigned char statusA, unsigned char statusB) {
    const os::MutexGuard guard(m_mutex);
    if (!m_on) {
        return;
    }
    const Time now = std::chrono::steady_clock::now();
    m_statusA = statusA;
    m_statusB = statusB;
    m_freshUntil = now + os::Scaled(kFresh);
    m_next = now + os::Scaled(kRepeatPeriod);
    m_send(statusA, statusB);
    m_changed.NotifyAll();
}

void StatusRepeater::Begin() {
    const os::MutexGuard guard(m_mutex);
    const Time now = std::chrono::steady_clock::now();
    if (m_on && now < m_freshUntil) {
        m_freshUntil = now + os::Scaled(kSkippedPolls + kFresh);
    }
    m_on = true;
}

void StatusRepeater::Stop() {
    const os::MutexGuard guard(m_mutex);
    m_on = false;
    m_freshUntil = {};
}

void StatusRepeater::Repeat() {
    const os::MutexGuard guard(m_mutex);
    while (!m_end) {
        const Time now = std::chrono::steady_clock::now();
        if (!m_on || now >= m_freshUntil) {
            m_changed.Wait(m_mutex);
        } else if (now < m_next) {
            m_changed.WaitUntil(m_mutex, m_next);
        } else {
            m_send(m_statusA, m_statusB);
            m_next = now + os::Scaled(kRepeatPeriod);
        }
    }
}

}  // namespace Korvex3Sync::device_service
