#include "korvexctl/ScanRecorder.h"

#include <algorithm>
#include <utility>

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::size_t kMonoImages = 2;

}  // namespace

ScanRecorder::ScanRecorder(int sets, int keep)
    : m_sets(sets), m_kept(static_cast<std::size_t>(std::min(keep, sets))) {
    for (std::size_t i = 0; i < m_kept.size(); ++i) {
        m_kept[i].number = static_cast<int>(i * static_cast<std::size_t>(sets) / m_kept.size());
    }
}

void ScanRecorder::Prepare(int width, int height, std::function<void(const KeptSet&)> onKept) {
    m_onKept = std::move(onKept);
    m_width = width;
    m_height = height;
    for (KeptSet& set : m_kept) {
        for (auto& image : set.images) {
            // Written once here, so that the grab thread meets no page for the first time.
            image.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0);
        }
    }
}

void ScanRecorder::OnSet(const void* const& context, std::vector<unsigned char*>& images,
                         const int& width, const int& height, std::vector<int>& /*imageInfo*/) {
    (*static_cast<ScanRecorder* const*>(context))->Take(images, width, height);
}

void ScanRecorder::Take(const std::vector<unsigned char*>& images, int width, int height) {
    const Clock::time_point arrival = Clock::now();
    const bool whole = (images.size() == kMonoImages || images.size() == kMonoImages + 1) &&
                       std::find(images.begin(), images.end(), nullptr) == images.end() &&
                       width == m_width && height == m_height;
    KeptSet* slot = nullptr;
    {
        const std::lock_guard lock(m_mutex);
        if (Over()) {
            return;
        }
        if (!whole) {
            ++m_counts.odd;
            return;
        }
        slot = SlotOfNext();
    }
    if (slot != nullptr) {
        slot->width = width;
        slot->height = height;
        slot->color = images.size() > kMonoImages;
        for (std::size_t i = 0; i < images.size(); ++i) {
            std::copy_n(images[i], slot->images[i].size(), slot->images[i].begin());
        }
        m_onKept(*slot);
    }
    const std::lock_guard lock(m_mutex);
    m_counts.last = arrival;
    if (m_counts.delivered == 0) {
        m_counts.first = arrival;
    }
    ++m_counts.delivered;
    if (images.size() > kMonoImages) {
        ++m_counts.withColor;
    }
    if (Over()) {
        m_changed.notify_all();
    }
}

KeptSet* ScanRecorder::SlotOfNext() {
    if (m_keptNext == m_kept.size() || m_kept[m_keptNext].number != m_counts.delivered) {
        return nullptr;
    }
    return &m_kept[m_keptNext++];
}

void ScanRecorder::Stop() {
    const std::lock_guard lock(m_mutex);
    m_counts.stopped = true;
    m_changed.notify_all();
}

ScanRecorder::Counts ScanRecorder::Wait(std::chrono::milliseconds limit) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, limit, [this] { return Over(); });
    return m_counts;
}

std::optional<double> ScanRecorder::Rate(const Counts& counts) {
    const std::chrono::duration<double> time = counts.last - counts.first;
    if (counts.delivered < 2 || time.count() <= 0) {
        return std::nullopt;
    }
    return (counts.delivered - 1) / time.count();
}

}  // namespace Korvex3Sync::korvexctl
