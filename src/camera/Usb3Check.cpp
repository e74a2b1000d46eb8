#include "camera/Usb3Check.h"

#include <string>
#include <vector>

#include "platform/include/USBTREE.h"
#include "platform/os/Log.h"

namespace Korvex3Sync {
namespace {

constexpr char kLog[] = "KorvexSyncControl";
/// The scanner board's identifiers, those that the manager opens it with.
constexpr unsigned long kVendorId = 0x3267;
constexpr unsigned long kProductId = 0x5752;

}  // namespace

bool FindBoardUsbSpeed(bool& superSpeed) {
    USBTREE::EnumAllHCD();
    std::vector<std::string> paths;
    USBTREE::GetSpecifyDeviceTreePath(kVendorId, kProductId, paths);
    USBTREE::EraseList();
    if (paths.empty()) {
        KORVEX_LOG(kLog) << "IsConnectedOnU3 Fail!";
        return false;
    }
    KORVEX_LOG(kLog) << paths.front();
    superSpeed = paths.front().find("UPT[4]-DEV") != std::string::npos;
    return true;
}

}  // namespace Korvex3Sync
