#include "Korvex3Sync/Statistics.h"

#include "interface/CallFrame.h"

namespace Korvex3Sync {

RETSTATUS GetScanStatistics(void* const& handle, ScanStatistics& statistics) {
    return ExportCall(Standard{&FramePath::GetScanStatistics, &zr3DHandiSyncQT::GetScanStatistics},
                      "GetScanStatistics", handle, statistics);
}

}  // namespace Korvex3Sync
