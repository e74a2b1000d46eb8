#include "korvexctl/scan/ScanRecorder.h"

#include <algorithm>
#include <utility>

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::size_t kMonoImages = 2;
constexpr std::size_t kRight = 1;
// The head puts the key into this pixel of the right image.
constexpr std::size_t kKeyPixel = 3;

}  // namespace

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
            // Written once here, so that the grab thread meets no page for the first time.
            image.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0);
        }
    }
}

void ScanRecorder::GiveBack(const KeptImageSet& set) {
    const std::lock_guard lock(m_mutex);
    m_free.push_back(&m_buffers[static_cast<std::size_t>(&set - m_buffers.data())]);
}

std::size_t ScanRecorder::Waiting() {
    const std::lock_guard lock(m_mutex);
    return m_buffers.size() - m_free.size();
}

void ScanRecorder::OnImageSet(const void* const& context, std::vector<unsigned char*>& images,
                              const int& width, const int& height,
                              std::vector<int>& /*imageInfo*/) {
    (*static_cast<ScanRecorder* const*>(context))->Take(images, width, height);
}

void ScanRecorder::Take(const std::vector<unsigned char*>& images, int width, int height) {
    const Clock::time_point arrival = Clock::now();
    const bool whole = (images.size() == kMonoImages || images.size() == kMonoImages + 1) &&
                       std::find(images.begin(), images.end(), nullptr) == images.end() &&
                       width == m_width && height == m_height;
    KeptImageSet* buffer = nullptr;
    {
        const std::lock_guard lock(m_mutex);
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
        buffer->key = kKeyPixel < buffer->images[kRight].size() ? images[kRight][kKeyPixel] : 0;
        m_onKept(*buffer);
    }
    const std::lock_guard lock(m_mutex);
    ++m_counts.delivered;
    if (images.size() > kMonoImages) {
        ++m_counts.withColor;
    }
    if (Over()) {
        m_changed.notify_all();
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
    buffer->seconds = std::chrono::duration<double>(m_counts.last - m_counts.first).count();
    return buffer;
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
