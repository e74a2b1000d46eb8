#include "sync/KeyTracker.h"

namespace Korvex3Sync {
namespace {

constexpr unsigned kKeyMask = 0xFF;
constexpr unsigned kLastKey = 0xFF;
/// One round of keys after a start every frame is of the new run.
constexpr int kUnsettledFrames = 256;

}  // namespace

KeyStep KeyTracker::Take(unsigned key, std::uint64_t starts) {
    if (starts != m_starts) {
        m_starts = starts;
        m_unsettled = kUnsettledFrames;
    }
    const KeyStep step = Judge(key);
    m_last = key;
    return step;
}

KeyStep KeyTracker::Judge(unsigned key) {
    if (!m_last) {
        const bool newRun = m_unsettled > 0;
        m_unsettled = 0;
        return {newRun ? key : 0, false};
    }
    const bool repeated = key == *m_last;
    const unsigned missing = repeated ? 0 : (key - *m_last - 1) & kKeyMask;
    if (m_unsettled > 0) {
        --m_unsettled;
        // After the last key both readings miss the same, whichever holds: the next keys tell.
        const bool newRun = key < missing || (key == missing && *m_last != kLastKey);
        if (newRun) {
            m_unsettled = 0;
            return {key, false};
        }
    }
    return {missing, repeated};
}

}  // namespace Korvex3Sync
