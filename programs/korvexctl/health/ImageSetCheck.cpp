#include "korvexctl/health/ImageSetCheck.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr unsigned kKeyMask = 0xFF;
// A step of more than half the key range is a step back.
constexpr unsigned kHalfRound = 0x80;

}  // namespace

void ImageSetCheck::OnImageSet(const void* const& context, std::vector<unsigned char*>& images,
                               const int& width, const int& height, std::vector<int>&) {
    CallbackContext<ImageSetCheck>::With(
        context, [&](ImageSetCheck& check) { check.Take(images, width, height); });
}

bool ImageSetCheck::Fits(const std::vector<unsigned char*>& images, int width, int height) const {
    return IsWhole(images) && width == m_width && height == m_height;
}

void ImageSetCheck::Take(const std::vector<unsigned char*>& images, int width, int height) {
    const os::MutexGuard guard(m_mutex);
    if (m_waiting > 0) {
        --m_waiting;
        return;
    }
    const auto now = Clock::now();
    m_counts.first = m_counts.sets == 0 ? now : m_counts.first;
    m_counts.last = now;
    ++m_counts.sets;
    if (!Fits(images, width, height)) {
        ++m_counts.odd;
    } else {
        m_counts.withColor += images.size() == kImagesWithColor ? 1 : 0;
        const unsigned key = KeyOf(images, width, height);
        const unsigned step = m_key ? (key - *m_key) & kKeyMask : 1;
        m_counts.backwards += step == 0 || step >= kHalfRound ? 1 : 0;
        m_key = key;
    }
    m_changed.NotifyAll();
}

void ImageSetCheck::WaitFor(int sets, std::chrono::milliseconds limit) {
    const auto end = Clock::now() + limit;
    const os::MutexGuard guard(m_mutex);
    while (m_counts.sets < sets && m_changed.WaitUntil(m_mutex, end)) {
    }
}

ImageSetCheck::Counts ImageSetCheck::WaitForQuiet(std::chrono::milliseconds quiet,
                                                  std::chrono::milliseconds limit) {
    const auto end = Clock::now() + limit;
    const os::MutexGuard guard(m_mutex);
    bool came = true;
    while (came && Clock::now() < end) {
        const int before = m_counts.sets;
        const auto quietEnd = Clock::now() + quiet;
        while (m_counts.sets == before && m_changed.WaitUntil(m_mutex, quietEnd)) {
        }
        came = m_counts.sets != before;
    }
    return m_counts;
}

}  // namespace Korvex3Sync::korvexctl
