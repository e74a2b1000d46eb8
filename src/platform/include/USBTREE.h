#pragma once

#include <string>
#include <vector>

#include "platform/include/PlatformExport.h"

/// The tree of USB devices. Every function may be called from any thread. Nothing is thrown.
namespace USBTREE {

/// Enumerates the host controllers and builds the tree anew.
KORVEX_PLATFORM_API bool EnumAllHCD();
/// Appends the tree path of each device with these identifiers. A path names hubs and ports and
/// ends in `UPT[n]-DEV`, n the negotiated speed: 1 low, 2 full, 3 high, 4 SuperSpeed and faster.
/// False, with nothing appended, when no such device is in the tree or there is no tree.
KORVEX_PLATFORM_API bool GetSpecifyDeviceTreePath(unsigned long vendorId, unsigned long productId,
                                                  std::vector<std::string>& paths);
/// Frees the tree.
KORVEX_PLATFORM_API void EraseList();

}  // namespace USBTREE
