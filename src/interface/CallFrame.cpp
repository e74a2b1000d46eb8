#include "interface/CallFrame.h"

namespace Korvex3Sync {

void LogEnter(const char* name) {
    KORVEX_LOG(kInterfaceLog) << name << " enter";
}

void LogException(const char* what) {
    KORVEX_LOG(kInterfaceLog) << "operation failed: " << what;
}

}  // namespace Korvex3Sync
