#include "interface/CallFrame.h"

namespace Korvex3Sync {

void LogEnter(const char* name) {
    KORVEX_LOG(kInterfaceLog) << name << " enter";
}

void LogException(const std::exception& error) {
    KORVEX_LOG(kInterfaceLog) << "operation failed: " << error.what();
}

RETSTATUS ServiceCall() {
    return ServiceClient() == nullptr ? STATUS_NOT_CONNECTED : STATUS_NOT_SUPPORTED;
}

}  // namespace Korvex3Sync
