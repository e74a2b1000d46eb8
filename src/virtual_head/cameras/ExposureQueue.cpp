#include "virtual_head/cameras/ExposureQueue.h"

#include <utility>

#include "platform/os/Clock.h"

namespace Korvex3Sync::virtual_head {

ExposureQueue::Pushed ExposureQueue::Push(const Exposure& exposure) {
    std::lock_guard lock(m_mutex);
    if (m_closed) {
        return Pushed::Closed;
    }
    if (m_waiting.size() >= m_most) {
        ++m_counts.lost;
        return Pushed::NoRoom;
    }
    m_waiting.push_back(exposure);
    m_changed.notify_one();
    return Pushed::Taken;
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
    if (exposure.counted) {
        ++m_counts.fetched.at(exposure.color ? 1 : 0);
    }
    return exposure;
}

void ExposureQueue::Clear() {
    std::lock_guard lock(m_mutex);
    Drop();
}

void ExposureQueue::Close() {
    std::lock_guard lock(m_mutex);
    m_closed = true;
    Drop();
    m_changed.notify_all();
}

std::uint64_t ExposureQueue::Lost() const {
    std::lock_guard lock(m_mutex);
    return m_counts.lost;
}

ExposureQueue::Counts ExposureQueue::Counted() const {
    std::lock_guard lock(m_mutex);
    return m_counts;
}

ExposureQueue::Counts ExposureQueue::Settle() {
    std::lock_guard lock(m_mutex);
    Drop();
    return std::exchange(m_counts, {});
}

void ExposureQueue::Drop() {
    for (const Exposure& exposure : m_waiting) {
        if (exposure.counted) {
            ++m_counts.dropped.at(exposure.color ? 1 : 0);
        }
    }
    m_waiting.clear();
}

}  // namespace Korvex3Sync::virtual_head
