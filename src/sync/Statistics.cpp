#include "Korvex3Sync/Statistics.h"

#include "platform/include/zr3DHandiDLPdev.h"
#include "sync/ManagerSync.h"

namespace Korvex3Sync {

RETSTATUS IManagerSync::GetScanStatistics(ScanStatistics& statistics) const {
    m_scanCounters.Read(statistics);
    statistics.framesAccepted = m_grabCounters->framesAccepted;
    // The part before the whole, so that a snap that fails meanwhile leaves no part above it.
    statistics.refusedFrames = m_grabCounters->refusedFrames;
    statistics.failedSnaps = m_grabCounters->failedSnaps;
    statistics.rejectedGeometry = m_grabCounters->rejectedGeometry;
    return STATUS_SUCCESS;
}

void IManagerSync::StartKeysAnew() {
    m_triggerStarts.StartAnew();
}

bool IManagerSync::WriteTriggerMode(void* handle, zr3DHandiDLPdev::MASK_TRIGGER_MODE mode) {
    m_triggerStarts.Writing(int{mode});
    const bool accepted = zr3DHandiDLPdev::zr3DSetVideoTrigleMode(handle, mode);
    m_triggerStarts.Written(accepted);
    return accepted;
}

}  // namespace Korvex3Sync
