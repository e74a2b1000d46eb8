#include "Korvex3Sync/Statistics.h"

#include "platform/include/zr3DHandiDLPdev.h"
#include "sync/ManagerSync.h"

namespace Korvex3Sync {

RETSTATUS IManagerSync::GetScanStatistics(ScanStatistics& statistics) const {
    m_frames.ReadStatistics(statistics);
    return STATUS_SUCCESS;
}

void IManagerSync::StartKeysAnew() {
    m_frames.Starts().StartAnew();
}

bool IManagerSync::WriteTriggerMode(void* handle, zr3DHandiDLPdev::MASK_TRIGGER_MODE mode) {
    m_frames.Starts().Writing(int{mode});
    const bool accepted = zr3DHandiDLPdev::zr3DSetVideoTrigleMode(handle, mode);
    m_frames.Starts().Written(accepted);
    return accepted;
}

}  // namespace Korvex3Sync
