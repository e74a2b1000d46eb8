#pragma once

#include <cstdint>
#include <optional>

#include "sync/frames/TriggerStarts.h"

namespace Korvex3Sync {

/// What the key of a mono frame says about the frames before it.
struct KeyStep {
    unsigned missing = 0;   // missing keys before this one, 0..255
    bool repeated = false;  // the key of a repeated or late frame: the stream has passed it already
};

/// Follows the keys of one camera's mono frames. Keys count triggers modulo 256 and begin at 0 with
/// each start of the trigger.
///
/// After a start, frames of the previous run may still arrive, and the first frames of the new run
/// may be lost. Each key is therefore interpreted both ways: as the next one of the previous run
/// and as one of the new run. The interpretation with fewer missing keys holds; if both miss the
/// same number, the new run. The first key of the new run ends this. Before the first start a key
/// is only compared with the one before it, because the trigger may have been running for long. The
/// same applies after Restart, which also discards the previous key.
///
/// A key up to 8 steps back is that of a repeated or late frame, and the newest key stays. While
/// both interpretations are open, this holds only for keys that were missing.
///
/// The class has no lock: the owner's lock guards it.
class KeyTracker {
public:
    /// `key` is 0..255. `run` is the current state of the trigger.
    KeyStep Take(unsigned key, const TriggerStarts::Run& run);

    /// The newest key so far. Late frames do not change it.
    std::optional<unsigned> Last() const { return m_last; }
    /// Whether all frames from before the latest start have arrived.
    bool OfLatestRun() const { return m_unsettled <= 0; }

private:
    /// Takes the key as the first one of a run.
    KeyStep Begin(unsigned key, unsigned missing);

    std::optional<unsigned> m_last;
    unsigned m_missing = 0;  // bit n: the key n steps before m_last has not arrived
    std::uint64_t m_starts = 0;
    int m_unsettled = 0;  // for how many keys a frame may still belong to the previous run
};

}  // namespace Korvex3Sync
