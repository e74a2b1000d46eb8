#include "platform/os/Clock.h"
#include "virtual_head/TriggerClock.h"

namespace Korvex3Sync::virtual_head {

void ExposureQueue::Push(const Exposure& exposure) {
    std::lock_guard lock(m_mutex);
    if (m_closed) {
        return;
    }
    if (m_waiting.size() >= m_most) {
        ++m_lost;
        return;
    }
    m_waiting.push_back(exposure);
    m_changed.notify_one();
}

std::optional<Exposure> ExposureQueue::Pop(std::chrono::milliseconds limit) {
    std::unique_lock lock(m_mutex);
    const auto deadline = std::chrono::steady_clock::now() + os::Scaled(limit);
    m_changed.wait_until(lock, deadline, [this] { return m_closed || !m_waiting.empty(); });
    if (m_closed || m_waiting.empty()) {
        return std::nullopt;
    }
    const Exposure exposure = m_waiting.front();
    m_waiting.pop_front();
    return exposure;
}

void ExposureQueue::Clear() {
    std::lock_guard lock(m_mutex);
    m_waiting.clear();
}

void ExposureQueue::Close() {
    std::lock_guard lock(m_mutex);
    m_closed = true;
    m_waiting.clear();
    m_changed.notify_all();
}

std::uint64_t ExposureQueue::Lost() const {
    std::lock_guard lock(m_mutex);
    return m_lost;
}

}  // namespace Korvex3Sync::virtual_head
