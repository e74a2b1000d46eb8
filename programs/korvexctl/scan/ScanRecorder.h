#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <vector>

#include "korvexctl/head/CallbackContext.h"
#include "korvexctl/pictures/ImageSet.h"
#include "korvexctl/pictures/ImageSetChoice.h"
#include "korvexctl/pictures/KeptImageSet.h"
#include "korvexctl/scan/SetRecord.h"
#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::korvexctl {

/// What a scan takes and keeps.
struct ScanPlan {
    int sets = std::numeric_limits<int>::max();
    ImageSetChoice choice{0, {}};
    bool recording = false;  // every set is kept for a replay
    int buffers = 1;         // sets that may wait to be written
};

/// Counts the sets of a scan, notes each, and copies those to keep into a bounded number of
/// buffers. The writer gives each buffer back; a set without a free buffer is not kept, so that
/// slow writing never blocks the scan. Take runs on a grab thread and only counts and copies into
/// existing buffers; everything else runs on the program's own threads. Thread-safe.
class ScanRecorder {
public:
    using Clock = std::chrono::steady_clock;

    struct Counts {
        int delivered = 0;
        int withColor = 0;
        int odd = 0;          ///< sets without two mono images, or of another size; not delivered
        int notKept = 0;      ///< pictures that are due and found no free buffer so far
        int notRecorded = 0;  ///< sets without a free buffer, of those to record
        Clock::time_point first{};
        Clock::time_point last{};
        bool stopped = false;

        /// From the arrival of the first set to that of the last one.
        std::chrono::duration<double> Time() const { return last - first; }
        /// Sets per second; empty with fewer than two.
        std::optional<double> Rate() const { return ImageSetsPerSecond(delivered, Time()); }
    };

    explicit ScanRecorder(const ScanPlan& plan);
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
    void* Context() { return m_context.Pointer(); }

    /// Ends the scan before all sets are there; also before it has begun.
    void Stop();
    /// Waits until the scan is over (all sets, or stopped), at most for the limit.
    Counts Wait(std::chrono::milliseconds limit);
    /// The notes of the sets since the last call, in order.
    std::vector<SetRecord> FetchRecords();

    /// Between a call with true and the first set after a call with false, the keys of the head may
    /// restart. Gaps in them do not count as losses.
    void ExpectNewKeys(bool expected);

private:
    void Take(const std::vector<unsigned char*>& images, int width, int height);
    bool Over() const KORVEX_REQUIRES(m_mutex) {
        return m_counts.stopped || m_counts.delivered == m_plan.sets;
    }
    /// A buffer for the set that arrives now, or null when it is not to be kept or none is free.
    KeptImageSet* BufferFor(SetRecord& record) KORVEX_REQUIRES(m_mutex);
    int LostBefore(int key) KORVEX_REQUIRES(m_mutex);

    const ScanPlan m_plan;
    std::function<void(const KeptImageSet&)> m_onKept;
    int m_width = 0;
    int m_height = 0;
    std::vector<KeptImageSet> m_buffers;
    os::Mutex m_mutex;
    os::Condition m_changed;
    int m_kept KORVEX_GUARDED_BY(m_mutex) = 0;
    int m_lost KORVEX_GUARDED_BY(m_mutex) = 0;
    int m_nextKey KORVEX_GUARDED_BY(m_mutex) = 0;
    bool m_newKeys KORVEX_GUARDED_BY(m_mutex) = false;
    bool m_keyUnknown KORVEX_GUARDED_BY(m_mutex) = false;
    std::vector<KeptImageSet*> m_free KORVEX_GUARDED_BY(m_mutex);
    std::vector<SetRecord> m_records KORVEX_GUARDED_BY(m_mutex);
    Counts m_counts KORVEX_GUARDED_BY(m_mutex);
    CallbackContext<ScanRecorder> m_context{*this};
};

}  // namespace Korvex3Sync::korvexctl
