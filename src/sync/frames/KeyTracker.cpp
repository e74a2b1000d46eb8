#include "sync/frames/KeyTracker.h"

#include <algorithm>

namespace Korvex3Sync {
namespace {

constexpr unsigned kKeyMask = 0xFF;
constexpr unsigned kLastKey = 0xFF;
/// After one round of keys, every frame belongs to the new run.
constexpr int kUnsettledKeys = 256;
/// Fewer if the new run may already have begun with key 0: a gap of the new run across the next
/// wrap must not look like a start.
constexpr int kUnsettledAfterWrap = 128;

}  // namespace

KeyStep KeyTracker::Take(unsigned key, const TriggerStarts::Run& run) {
    if (run.anew > m_starts) {
        m_last.reset();
        m_starts = run.anew;
        m_unsettled = 0;
    }
    if (run.starts != m_starts) {
        m_starts = run.starts;
        m_unsettled = kUnsettledKeys;
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
        if (*m_last == kLastKey) {
            // Both interpretations miss the same keys; only the next keys can decide.
            m_unsettled = std::min(m_unsettled, kUnsettledAfterWrap);
        } else if (key <= missing) {
            m_unsettled = 0;
            return {key, false};
        }
        m_unsettled -= static_cast<int>(missing) + 1;
    }
    return {missing, repeated};
}

}  // namespace Korvex3Sync
