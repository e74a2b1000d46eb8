#pragma once

#include <chrono>

#include "Korvex3Sync/Statistics.h"
#include "platform/os/CriticalSection.h"
#include "sync/frames/CallbackTimes.h"
#include "sync/frames/KeyTracker.h"

namespace Korvex3Sync {

/// Counts what the frame path delivers and loses. Each method is one step of a frame or a set and
/// updates all related figures together, so they add up at any moment. Thread-safe. The lock is
/// held for a few additions, and by a reader for one pass over the times.
class ScanCounters {
public:
    using Duration = std::chrono::steady_clock::duration;

    // A frame.

    void UnroutedFrame();
    void UndecodableFrame();
    /// A mono frame was accepted; its set is now pending.
    void MonoArrived(const KeyStep& step);
    void ColorWithoutMono();
    void ColorForSnapshot();

    // A pending set ends in one of these ways.

    /// The callback returned. `colorMissing`: the set has no colour image although one was
    /// expected.
    void SetDelivered(Duration took, bool withColor, bool colorMissing);
    /// The callback threw, or there was no memory to call it.
    void SetThrown(Duration took);
    void SetWithoutCallback();
    void SetDropped();

    /// Fills in everything except the figures of the grab threads.
    void Read(ScanStatistics& statistics) const;

private:
    mutable os::Mutex m_mutex;
    ScanStatistics m_counts KORVEX_GUARDED_BY(m_mutex);
    CallbackTimes m_times KORVEX_GUARDED_BY(m_mutex);
};

}  // namespace Korvex3Sync
