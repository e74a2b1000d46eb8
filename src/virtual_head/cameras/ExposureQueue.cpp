#include "virtual_head/cameras/ExposureQueue.h"

#include <utility>

namespace Korvex3Sync::virtual_head {

ExposureQueue::Pushed ExposureQueue::Push(const Exposure& exposure) {
    os::MutexGuard lock(m_mutex);
    if (m_closed) {
        return Pushed::Closed;
    }
    if (m_waiting.size() >= m_most) {
        ++m_counts.lost;
        return Pushed::NoRoom;
    }
    m_waiting.push_back(exposure);
    m_changed.NotifyOne();
    return Pushed::Taken;
}

std::optional<Exposure> ExposureQueue::Pop(std::chrono::steady_clock::time_point deadline) {
    os::MutexGuard lock(m_mutex);
    while (!m_closed && m_waiting.empty() && m_changed.WaitUntil(m_mutex, deadline)) {
    }
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
    os::MutexGuard lock(m_mutex);
    Drop();
}

void ExposureQueue::Close() {
    os::MutexGuard lock(m_mutex);
    m_closed = true;
    Drop();
    m_changed.NotifyAll();
}

std::uint64_t ExposureQueue::Lost() const {
    os::MutexGuard lock(m_mutex);
    return m_counts.lost;
}

ExposureQueue::Counts ExposureQueue::Counted() const {
    os::MutexGuard lock(m_mutex);
    return m_counts;
}

ExposureQueue::Counts ExposureQueue::Settle() {
    os::MutexGuard lock(m_mutex);
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
