#include "korvexctl/scan/ScanRecorder.h"

#include <algorithm>
#include <utility>

namespace Korvex3Sync::korvexctl {

ScanRecorder::ScanRecorder(int sets, std::vector<ChosenImageSet> chosen, int buffers)
    : m_sets(sets),
      m_chosen(std::move(chosen)),
      m_buffers(std::min(m_chosen.size(), static_cast<std::size_t>(buffers))) {
    m_free.reserve(m_buffers.size());
    for (KeptImageSet& buffer : m_buffers) {
        m_free.push_back(&buffer);
    }
}

void ScanRecorder::Prepare(int width, int height, std::function<void(const KeptImageSet&)> onKept) {
    m_onKept = std::move(onKept);
    m_width = width;
    m_height = height;
    for (KeptImageSet& buffer : m_buffers) {
        buffer.width = width;
        buffer.height = height;
        for (auto& image : buffer.images) {
            // Written once here, so that the grab thread takes no page faults.
            image.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0);
        }
    }
}

void ScanRecorder::GiveBack(const KeptImageSet& set) {
    const os::MutexGuard guard(m_mutex);
    m_free.push_back(&m_buffers[static_cast<std::size_t>(&set - m_buffers.data())]);
}

std::size_t ScanRecorder::Waiting() {
    const os::MutexGuard guard(m_mutex);
    return m_buffers.size() - m_free.size();
}

void ScanRecorder::OnImageSet(const void* const& context, std::vector<unsigned char*>& images,
                              const int& width, const int& height,
                              std::vector<int>& /*imageInfo*/) {
    (*static_cast<ScanRecorder* const*>(context))->Take(images, width, height);
}

void ScanRecorder::Take(const std::vector<unsigned char*>& images, int width, int height) {
    const Clock::time_point arrival = Clock::now();
    const bool whole = IsWhole(images) && width == m_width && height == m_height;
    KeptImageSet* buffer = nullptr;
    {
        const os::MutexGuard guard(m_mutex);
        if (Over()) {
            return;
        }
        if (!whole) {
            ++m_counts.odd;
            return;
        }
        m_counts.last = arrival;
        if (m_counts.delivered == 0) {
            m_counts.first = arrival;
        }
        buffer = BufferForNext();
    }
    if (buffer != nullptr) {
        buffer->color = images.size() > kMonoImages;
        for (std::size_t i = 0; i < images.size(); ++i) {
            std::copy_n(images[i], buffer->images[i].size(), buffer->images[i].begin());
        }
        buffer->key = static_cast<int>(KeyOf(images, width, height));
        m_onKept(*buffer);
    }
    const os::MutexGuard guard(m_mutex);
    ++m_counts.delivered;
    if (images.size() > kMonoImages) {
        ++m_counts.withColor;
    }
    if (Over()) {
        m_changed.NotifyAll();
    }
}

KeptImageSet* ScanRecorder::BufferForNext() {
    if (m_nextChosen == m_chosen.size() || m_chosen[m_nextChosen].number != m_counts.delivered) {
        return nullptr;
    }
    const ChosenImageSet& chosen = m_chosen[m_nextChosen++];
    if (m_free.empty()) {
        ++m_counts.notKept;
        return nullptr;
    }
    KeptImageSet* const buffer = m_free.back();
    m_free.pop_back();
    buffer->chosen = chosen;
    buffer->seconds = m_counts.Time().count();
    return buffer;
}

void ScanRecorder::Stop() {
    const os::MutexGuard guard(m_mutex);
    m_counts.stopped = true;
    m_changed.NotifyAll();
}

ScanRecorder::Counts ScanRecorder::Wait(std::chrono::milliseconds limit) {
    const auto end = Clock::now() + limit;
    const os::MutexGuard guard(m_mutex);
    while (!Over() && m_changed.WaitUntil(m_mutex, end)) {
    }
    return m_counts;
}

}  // namespace Korvex3Sync::korvexctl
