#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <vector>

#include "korvexctl/pictures/ImageSetChoice.h"
#include "korvexctl/pictures/KeptImageSet.h"

namespace Korvex3Sync::korvexctl {

/// Counts the sets of a scan and copies the chosen ones into a bounded number of buffers. Whoever
/// writes a copy gives its buffer back; a chosen set that finds no free buffer is counted and not
/// kept, so that writing, however slow, never holds up the scan. Take runs on a grab thread and
/// does nothing but count and copy into buffers made before; everything else is called by the
/// program's own threads. Thread-safe.
class ScanRecorder {
public:
    using Clock = std::chrono::steady_clock;

    struct Counts {
        int delivered = 0;
        int withColor = 0;
        int odd = 0;      ///< sets without two mono images, or of another size; not delivered
        int notKept = 0;  ///< chosen sets that found no free buffer; delivered all the same
        Clock::time_point first{};
        Clock::time_point last{};
        bool stopped = false;
    };

    /// `chosen` is in the order of the numbers. At most `buffers` sets are held at a time.
    ScanRecorder(int sets, std::vector<ChosenImageSet> chosen, int buffers);
    ScanRecorder(const ScanRecorder&) = delete;
    ScanRecorder& operator=(const ScanRecorder&) = delete;

    /// Makes the buffers; before the scan starts. `onKept` is called with each kept set, on the
    /// grab thread, and must only pass it on; the set stays valid and unchanged until it is given
    /// back.
    void Prepare(int width, int height, std::function<void(const KeptImageSet&)> onKept);
    /// Gives the buffer of a kept set back. Any thread; does not block.
    void GiveBack(const KeptImageSet& set);

    /// How many kept sets were not given back yet. Any thread.
    std::size_t Waiting();

    /// The library's scan callback, with Context() as its context.
    static void OnImageSet(const void* const& context, std::vector<unsigned char*>& images,
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
    /// A buffer for the set that arrives now, or null when it is not chosen or none is free.
    KeptImageSet* BufferForNext();

    ScanRecorder* m_self = this;
    const int m_sets;
    const std::vector<ChosenImageSet> m_chosen;
    std::function<void(const KeptImageSet&)> m_onKept;
    std::size_t m_nextChosen = 0;
    int m_width = 0;
    int m_height = 0;
    std::vector<KeptImageSet> m_buffers;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<KeptImageSet*> m_free;
    Counts m_counts;
};

}  // namespace Korvex3Sync::korvexctl
