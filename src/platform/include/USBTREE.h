#pragma once

#include <string>
#include <vector>

#include "platform/include/PlatformExport.h"

/// The tree of USB devices. Any thread may call the functions. They do not throw.
namespace USBTREE {

/// Enumerates the host controllers and rebuilds the tree.
KORVEX_PLATFORM_API bool EnumAllHCD();
/// Appends the tree path of each device with these identifiers. A path names hubs and ports and
/// ends in `UPT[n]-DEV`, where n is the negotiated speed: 1 low, 2 full, 3 high, 4 SuperSpeed or
/// faster. If there is no such device or no tree, returns false and appends nothing.
KORVEX_PLATFORM_API bool GetSpecifyDeviceTreePath(unsigned long vendorId, unsigned long productId,
                                                  std::vector<std::string>& paths);
/// Frees the tree.
KORVEX_PLATFORM_API void EraseList();

}  // namespace USBTREE
