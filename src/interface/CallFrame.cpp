#include "interface/CallFrame.h"

namespace Korvex3Sync {

void LogEnter(const char* name) {
    KORVEX_LOG(kInterfaceLog) << name << " enter";
}

void LogException(const char* what) {
    KORVEX_LOG(kInterfaceLog) << "operation failed: " << what;
}

RETSTATUS ServiceCall() {
    return ServiceClient() == nullptr ? STATUS_NOT_CONNECTED : STATUS_NOT_SUPPORTED;
}

}  // namespace Korvex3Sync
