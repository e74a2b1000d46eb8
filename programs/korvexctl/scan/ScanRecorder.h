#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "korvexctl/pictures/ImageSet.h"
#include "korvexctl/pictures/ImageSetChoice.h"
#include "korvexctl/pictures/KeptImageSet.h"
#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::korvexctl {

/// Counts the sets of a scan and copies the chosen ones into a bounded number of buffers. The
/// writer gives each buffer back; a chosen set without a free buffer is counted and not kept, so
/// that slow writing never blocks the scan. Take runs on a grab thread and only counts and copies
/// into existing buffers; everything else runs on the program's own threads. Thread-safe.
class ScanRecorder {
public:
    using Clock = std::chrono::steady_clock;

    struct Counts {
        int delivered = 0;
        int withColor = 0;
        int odd = 0;      ///< sets without two mono images, or of another size; not delivered
        int notKept = 0;  ///< chosen sets without a free buffer; they count as delivered
        Clock::time_point first{};
        Clock::time_point last{};
        bool stopped = false;

        /// From the arrival of the first set to that of the last one.
        std::chrono::duration<double> Time() const { return last - first; }
        /// Sets per second; empty with fewer than two.
        std::optional<double> Rate() const { return ImageSetsPerSecond(delivered, Time()); }
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

private:
    void Take(const std::vector<unsigned char*>& images, int width, int height);
    bool Over() const KORVEX_REQUIRES(m_mutex) {
        return m_counts.stopped || m_counts.delivered == m_sets;
    }
    /// A buffer for the set that arrives now, or null when it is not chosen or none is free.
    KeptImageSet* BufferForNext() KORVEX_REQUIRES(m_mutex);

    ScanRecorder* m_self = this;
    const int m_sets;
    const std::vector<ChosenImageSet> m_chosen;
    std::function<void(const KeptImageSet&)> m_onKept;
    int m_width = 0;
    int m_height = 0;
    std::vector<KeptImageSet> m_buffers;
    os::Mutex m_mutex;
    os::Condition m_changed;
    std::size_t m_nextChosen KORVEX_GUARDED_BY(m_mutex) = 0;
    std::vector<KeptImageSet*> m_free KORVEX_GUARDED_BY(m_mutex);
    Counts m_counts KORVEX_GUARDED_BY(m_mutex);
};

}  // namespace Korvex3Sync::korvexctl
