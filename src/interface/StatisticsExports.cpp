#include "Korvex3Sync/Statistics.h"

#include "interface/CallFrame.h"

namespace Korvex3Sync {

RETSTATUS GetScanStatistics(void* const& handle, ScanStatistics& statistics) {
    return ExportCall(Variant::DirectOnly, "GetScanStatistics", handle,
                      &IManagerSync::GetScanStatistics, statistics);
}

}  // namespace Korvex3Sync
