#include "platform/os/Device.h"

#include <fcntl.h>
#include <unistd.h>

#include "platform/os/Descriptors.h"

namespace Korvex3Sync::os {

std::error_code CheckDeviceAccess(const std::filesystem::path& device) {
    const int descriptor = ::open(device.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) {
        return LastError();
    }
    ::close(descriptor);
    return {};
}

}  // namespace Korvex3Sync::os
