#include "korvexctl/health/ImageSetCheck.h"

#include <algorithm>

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::size_t kMonoImages = 2;
constexpr std::size_t kWithColor = 3;
// The trigger number modulo 256 stands in the place of this pixel of the second image.
constexpr std::size_t kKeyPixel = 3;
constexpr unsigned kKeyMask = 0xFF;
// A step of more than half a round is one backwards.
constexpr unsigned kHalfRound = 0x80;

}  // namespace

std::optional<double> ImageSetCheck::Counts::Rate() const {
    const double seconds = std::chrono::duration<double>(last - first).count();
    return sets > 1 && seconds > 0 ? std::optional((sets - 1) / seconds) : std::nullopt;
}

void ImageSetCheck::OnImageSet(const void* const& context, std::vector<unsigned char*>& images,
                               const int& width, const int& height, std::vector<int>&) {
    (*static_cast<ImageSetCheck* const*>(context))->Take(images, width, height);
}

bool ImageSetCheck::Fits(const std::vector<unsigned char*>& images, int width, int height) const {
    return (images.size() == kMonoImages || images.size() == kWithColor) && width == m_width &&
           height == m_height && std::find(images.begin(), images.end(), nullptr) == images.end();
}

void ImageSetCheck::Take(const std::vector<unsigned char*>& images, int width, int height) {
    {
        const std::lock_guard lock(m_mutex);
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
            m_counts.withColor += images.size() == kWithColor ? 1 : 0;
            const unsigned key = images[1][kKeyPixel];
            const unsigned step = m_key ? (key - *m_key) & kKeyMask : 1;
            m_counts.backwards += step == 0 || step >= kHalfRound ? 1 : 0;
            m_key = key;
        }
    }
    m_changed.notify_all();
}

void ImageSetCheck::WaitFor(int sets, std::chrono::milliseconds limit) {
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, limit, [&] { return m_counts.sets >= sets; });
}

ImageSetCheck::Counts ImageSetCheck::WaitForQuiet(std::chrono::milliseconds quiet,
                                                  std::chrono::milliseconds limit) {
    const auto end = Clock::now() + limit;
    std::unique_lock lock(m_mutex);
    bool came = true;
    while (came && Clock::now() < end) {
        const int before = m_counts.sets;
        came = m_changed.wait_for(lock, quiet, [&] { return m_counts.sets != before; });
    }
    return m_counts;
}

}  // namespace Korvex3Sync::korvexctl
