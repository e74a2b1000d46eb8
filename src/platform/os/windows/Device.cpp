#include "platform/os/Device.h"

#include "platform/os/Descriptors.h"
#include "platform/os/windows/System.h"

namespace Korvex3Sync::os {

std::error_code CheckDeviceAccess(const std::filesystem::path& device) {
    const Handle opened = Opened(::CreateFileW(device.c_str(), GENERIC_READ | GENERIC_WRITE,
                                               FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                               OPEN_EXISTING, 0, nullptr));
    return opened ? std::error_code{} : LastError();
}

}  // namespace Korvex3Sync::os
