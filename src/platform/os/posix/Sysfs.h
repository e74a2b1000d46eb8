#pragma once

#include <filesystem>
#include <vector>

#include "platform/os/UsbDevices.h"

namespace Korvex3Sync::os {

/// ListUsbDevices of a machine whose /sys and /dev are these folders.
std::vector<UsbDevice> UsbDevicesOf(const std::filesystem::path& sys,
                                    const std::filesystem::path& dev);

}  // namespace Korvex3Sync::os
