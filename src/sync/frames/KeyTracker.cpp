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
/// A frame that is later than this is not known as late.
constexpr unsigned kMostBack = 8;

/// A bit for each of the keys from 1 to `keys` back, as far as late ones are known.
constexpr unsigned KeysBack(unsigned keys) {
    return (2U << std::min(keys, kMostBack)) - 2U;
}

}  // namespace

KeyStep KeyTracker::Take(unsigned key, const TriggerStarts::Run& run) {
    if (run.countsFrom > m_starts) {
        m_last.reset();
        m_starts = run.countsFrom;
        m_unsettled = 0;
    }
    if (run.starts != m_starts) {
        m_starts = run.starts;
        m_unsettled = kUnsettledKeys;
    }
    if (!m_last) {
        return Begin(key, OfLatestRun() ? 0 : key);
    }
    const unsigned back = (*m_last - key) & kKeyMask;
    const bool passed =
        back == 0 || (back <= kMostBack && (OfLatestRun() || (m_missing >> back & 1U) != 0));
    const unsigned missing = passed ? 0 : (key - *m_last - 1) & kKeyMask;
    if (!OfLatestRun()) {
        if (*m_last == kLastKey) {
            // Both interpretations miss the same keys; only the next keys can decide.
            m_unsettled = std::min(m_unsettled, kUnsettledAfterWrap);
        } else if (key <= missing) {
            return Begin(key, key);
        }
        m_unsettled -= static_cast<int>(missing) + 1;
    }
    if (passed) {
        m_missing &= ~(1U << back);
        return {0, true};
    }
    m_missing = (m_missing << std::min(missing + 1, kMostBack + 1)) | KeysBack(missing);
    m_last = key;
    return {missing, false};
}

KeyStep KeyTracker::Begin(unsigned key, unsigned missing) {
    m_unsettled = 0;
    m_missing = KeysBack(missing);
    m_last = key;
    return {missing, false};
}

}  // namespace Korvex3Sync
