#pragma once

#include <cstdint>
#include <optional>

#include "sync/frames/TriggerStarts.h"

namespace Korvex3Sync {

/// What a mono frame's key tells about the frames before it.
struct KeyStep {
    unsigned missing = 0;   // keys that never came, 0..255
    bool repeated = false;  // the key of the frame before once more
};

/// Follows the keys of one camera's mono frames. Keys count triggers modulo 256 and begin at 0 with
/// each start of the trigger.
///
/// Frames of the former run may still come after a start, and whatever comes first of the new run
/// may be lost. So from a start on each key is read both ways, as one more of the former run and as
/// one of the new run, and the reading that misses fewer keys holds; of two that miss as many, the
/// new run. The first key of the new run ends this. Before the first start a key is compared with
/// the one before it only: the trigger may have run for long. After a start anew it is the same,
/// and no key from before it is compared with.
///
/// No threads, no locks: the owner's lock guards it.
class KeyTracker {
public:
    /// `key` is 0..255. `run` is what is known of the trigger now.
    KeyStep Take(unsigned key, const TriggerStarts::Run& run);

private:
    KeyStep Judge(unsigned key);

    std::optional<unsigned> m_last;
    std::uint64_t m_starts = 0;
    int m_unsettled = 0;  // keys for which a frame may still be of the former run
};

}  // namespace Korvex3Sync
