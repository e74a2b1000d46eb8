#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

#include "korvexctl/head/CallbackContext.h"
#include "korvexctl/pictures/ImageSet.h"
#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::korvexctl {

/// Checks the image sets of a scan without keeping any: their number, images, size, and whether
/// their keys increase. Thread-safe.
class ImageSetCheck {
public:
    using Clock = std::chrono::steady_clock;

    struct Counts {
        int sets = 0;
        int withColor = 0;
        int odd = 0;        // not two or three images of the expected size
        int backwards = 0;  // keys that do not follow the previous one
        Clock::time_point first{};
        Clock::time_point last{};

        /// Sets per second from the first to the last one; empty with fewer than two.
        std::optional<double> Rate() const { return ImageSetsPerSecond(sets, last - first); }
    };

    /// `waiting`: sets of an earlier scan that are still in the library and arrive first; they do
    /// not count.
    ImageSetCheck(std::uint64_t waiting, int width, int height)
        : m_width(width), m_height(height), m_waiting(waiting) {}

    /// The library's scan callback, with Context() as its context.
    static void OnImageSet(const void* const& context, std::vector<unsigned char*>& images,
                           const int& width, const int& height, std::vector<int>& imageInfo);
    void* Context() { return m_context.Pointer(); }

    /// Waits until so many sets arrived, at most for the limit.
    void WaitFor(int sets, std::chrono::milliseconds limit);
    /// Waits until no set has arrived for this long, at most for the limit.
    Counts WaitForQuiet(std::chrono::milliseconds quiet, std::chrono::milliseconds limit);

private:
    void Take(const std::vector<unsigned char*>& images, int width, int height);
    bool Fits(const std::vector<unsigned char*>& images, int width, int height) const;

    const int m_width;
    const int m_height;
    os::Mutex m_mutex;
    os::Condition m_changed;
    std::uint64_t m_waiting KORVEX_GUARDED_BY(m_mutex);
    std::optional<unsigned> m_key KORVEX_GUARDED_BY(m_mutex);
    Counts m_counts KORVEX_GUARDED_BY(m_mutex);
    CallbackContext<ImageSetCheck> m_context{*this};
};

}  // namespace Korvex3Sync::korvexctl
