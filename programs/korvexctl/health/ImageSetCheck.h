#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

namespace Korvex3Sync::korvexctl {

/// Looks at the image sets of a scan without keeping any: their number, images, size, and whether
/// their keys go on by one trigger after the other. Thread-safe.
class ImageSetCheck {
public:
    using Clock = std::chrono::steady_clock;

    struct Counts {
        int sets = 0;
        int withColor = 0;
        int odd = 0;        // not two or three images of the expected size
        int backwards = 0;  // keys that do not come after the one before
        Clock::time_point first{};
        Clock::time_point last{};

        /// Sets per second from the first to the last one; nothing with fewer than two.
        std::optional<double> Rate() const;
    };

    /// `waiting`: so many sets of an earlier scan wait in the library and come first; they do not
    /// count.
    ImageSetCheck(std::uint64_t waiting, int width, int height)
        : m_waiting(waiting), m_width(width), m_height(height) {}

    /// The library's scan callback, with Context() as its context.
    static void OnImageSet(const void* const& context, std::vector<unsigned char*>& images,
                           const int& width, const int& height, std::vector<int>& imageInfo);
    void* Context() { return &m_self; }

    /// Waits until so many sets came, at most for the limit.
    void WaitFor(int sets, std::chrono::milliseconds limit);
    /// Waits until no set has come for this long, at most for the limit.
    Counts WaitForQuiet(std::chrono::milliseconds quiet, std::chrono::milliseconds limit);

private:
    void Take(const std::vector<unsigned char*>& images, int width, int height);
    bool Fits(const std::vector<unsigned char*>& images, int width, int height) const;

    ImageSetCheck* m_self = this;
    std::uint64_t m_waiting;
    const int m_width;
    const int m_height;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::optional<unsigned> m_key;
    Counts m_counts;
};

}  // namespace Korvex3Sync::korvexctl
