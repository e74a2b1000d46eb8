#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

namespace Korvex3Sync::korvexctl {

/// One image set that was kept.
struct KeptSet {
    int number = 0;  // in the scan, from 0
    int width = 0;
    int height = 0;
    bool color = false;
    std::array<std::vector<std::uint8_t>, 3> images;  // left, right, colour mosaic
};

/// Counts the sets of a scan and copies those that are kept: `keep` of them, evenly spread over
/// `sets`. Take runs on a grab thread and does nothing but count and copy into buffers made before;
/// everything else is called by the program's own threads. Thread-safe.
class ScanRecorder {
public:
    using Clock = std::chrono::steady_clock;

    struct Counts {
        int delivered = 0;
        int withColor = 0;
        int odd = 0;  ///< sets without two mono images, or of another size; not delivered
        Clock::time_point first{};
        Clock::time_point last{};
        bool stopped = false;
    };

    ScanRecorder(int sets, int keep);
    ScanRecorder(const ScanRecorder&) = delete;
    ScanRecorder& operator=(const ScanRecorder&) = delete;

    /// Makes the buffers; before the scan starts. `onKept` is called with each kept set, on the
    /// grab thread, and must only pass it on; the set stays valid and unchanged as long as the
    /// recorder lives.
    void Prepare(int width, int height, std::function<void(const KeptSet&)> onKept);

    /// The library's scan callback, with Context() as its context.
    static void OnSet(const void* const& context, std::vector<unsigned char*>& images,
                      const int& width, const int& height, std::vector<int>& imageInfo);
    void* Context() { return &m_self; }

    /// Ends the scan before all sets are there; also before it has begun.
    void Stop();
    /// Waits until the scan is over (all sets, or stopped), at most for the limit.
    Counts Wait(std::chrono::milliseconds limit);

    /// Sets per second from the first to the last one; nothing with fewer than two.
    static std::optional<double> Rate(const Counts& counts);

private:
    void Take(const std::vector<unsigned char*>& images, int width, int height);
    bool Over() const { return m_counts.stopped || m_counts.delivered == m_sets; }
    /// The buffer for the set that arrives now, or null when it is not one to keep.
    KeptSet* SlotOfNext();

    ScanRecorder* m_self = this;
    const int m_sets;
    std::function<void(const KeptSet&)> m_onKept;
    std::vector<KeptSet> m_kept;
    std::size_t m_keptNext = 0;
    int m_width = 0;
    int m_height = 0;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    Counts m_counts;
};

}  // namespace Korvex3Sync::korvexctl
