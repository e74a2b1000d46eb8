#include "sync/frames/ColorExpectation.h"

#include <algorithm>

namespace Korvex3Sync {
namespace {

/// As many frames as there are keys: no camera keeps more of them waiting.
constexpr int kMostWaiting = 256;

}  // namespace

bool ColorExpectation::TakeMono(const TriggerStarts::Run& run, bool ofLatestRun) {
    if (m_changes != run.changes) {
        m_changes = run.changes;
        m_framesSince = 0;
    }
    if (ofLatestRun) {
        m_passed = std::max(m_passed, run.changesAtStart);
    }
    if (m_framesSince == kMostWaiting) {
        m_passed = run.changes;
    } else {
        ++m_framesSince;
    }
    if (m_passed < run.changes && GivesColor() && m_awaitsColor) {
        ++m_passed;
    }
    m_awaitsColor = true;
    return run.givesColor && m_passed == run.changes;
}

void ColorExpectation::TakeColor(const TriggerStarts::Run& run) {
    m_awaitsColor = false;
    if (m_passed < run.changes && !GivesColor()) {
        ++m_passed;
    }
}

}  // namespace Korvex3Sync
