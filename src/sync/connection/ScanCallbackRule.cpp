#include "sync/connection/ScanCallbackRule.h"

#ifdef KORVEX_CHECKS

#include <utility>

#include "platform/os/Log.h"
#include "sync/connection/ManagerLog.h"

namespace Korvex3Sync {
namespace {

thread_local const void* t_connection = nullptr;

}  // namespace

InScanCallback::InScanCallback(const void* connection)
    : m_previous(std::exchange(t_connection, connection)) {}

InScanCallback::~InScanCallback() {
    t_connection = m_previous;
}

void CheckNotInScanCallback(const void* connection) {
    if (t_connection == connection) {
        KORVEX_LOG_ERROR(kManagerSyncLog)
            << "an operation was called in a scan callback of the same handle: it can wait "
               "for a reconnection that waits for this callback";
    }
}

}  // namespace Korvex3Sync

#else

namespace Korvex3Sync {

InScanCallback::InScanCallback(const void*) {}
InScanCallback::~InScanCallback() = default;
void CheckNotInScanCallback(const void*) {}

}  // namespace Korvex3Sync

#endif
