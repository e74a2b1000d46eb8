#pragma once

#include <filesystem>
#include <system_error>

namespace Korvex3Sync::os {

/// Whether this user can open a device for reading and writing: opens it and closes it again.
std::error_code CheckDeviceAccess(const std::filesystem::path& device);

}  // namespace Korvex3Sync::os
