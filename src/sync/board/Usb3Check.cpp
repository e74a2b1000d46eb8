#include "sync/board/Usb3Check.h"

#include <string>
#include <vector>

#include "platform/include/BoardFacts.h"
#include "platform/include/USBTREE.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Log.h"

namespace Korvex3Sync {
namespace {

constexpr char kUsb3CheckLog[] = "KorvexSyncControl";

/// The USB library has one tree per process, so one caller at a time builds and frees it.
std::vector<std::string> BoardPaths() {
    static os::Mutex oneAtATime;
    os::MutexGuard lock(oneAtATime);
    std::vector<std::string> paths;
    USBTREE::EnumAllHCD();
    USBTREE::GetSpecifyDeviceTreePath(hardware::kBoardVendor, hardware::kBoardProduct, paths);
    USBTREE::EraseList();
    return paths;
}

}  // namespace

bool FindBoardUsbSpeed(bool& superSpeed) {
    const std::vector<std::string> paths = BoardPaths();
    if (paths.empty()) {
        KORVEX_LOG(kUsb3CheckLog) << "IsConnectedOnU3 Fail!";
        return false;
    }
    KORVEX_LOG(kUsb3CheckLog) << paths.front();
    superSpeed = paths.front().find("UPT[4]-DEV") != std::string::npos;
    return true;
}

}  // namespace Korvex3Sync
