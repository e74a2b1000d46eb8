#pragma once

#include <cstdint>

#include "sync/frames/TriggerStarts.h"

namespace Korvex3Sync {

/// Tells for each mono frame of one camera whether a colour frame belongs to it.
///
/// When the trigger mode changes, frames of the modes before may still wait in the camera. A change
/// is behind the frames when the first frame of a start after it has come. While the trigger runs
/// on, the frames themselves show it: the first colour frame shows that a mode with colour has
/// begun, the first mono frame without one that it has ended. One round of keys after a change all
/// frames are of the newest mode. Until then no colour is expected, rather than one too many.
///
/// No threads, no locks: the owner's lock guards it.
class ColorExpectation {
public:
    /// Whether the colour frame of this mono frame is to come. `ofLatestRun`: no frame from before
    /// the latest start can come any more.
    bool TakeMono(const TriggerStarts::Run& run, bool ofLatestRun);
    /// The colour frame of the last mono frame has come.
    void TakeColor(const TriggerStarts::Run& run);

private:
    /// Of the frames that come now. The first mode has no colour, and each change is to the other.
    bool GivesColor() const { return m_passed % 2 != 0; }

    std::uint64_t m_passed = 0;   // changes that are behind the frames
    std::uint64_t m_changes = 0;  // changes known at the last mono frame
    int m_framesSince = 0;        // mono frames since the last of them
    bool m_awaitsColor = false;   // no colour frame has come since the last mono frame
};

}  // namespace Korvex3Sync
