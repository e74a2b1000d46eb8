#include "Korvex3Sync/Statistics.h"

#include "interface/CallFrame.h"

namespace Korvex3Sync {

RETSTATUS GetScanStatistics(void* const& handle, ScanStatistics& statistics) {
    return ExportCall(DirectOnly{&FramePath::GetScanStatistics}, "GetScanStatistics", handle,
                      statistics);
}

}  // namespace Korvex3Sync
