#pragma once

#include <filesystem>
#include <system_error>

#include "platform/os/File.h"

namespace Korvex3Sync::os {

/// Takes a lock that one process at a time can hold, and writes the number of this process into its
/// file. The lock lasts until the file is closed or the process ends, however it ends; the file
/// stays and is used again. Makes the file if it is missing. Fails with
/// errc::resource_unavailable_try_again if the lock is held, by this process too.
File TakeInstanceLock(const std::filesystem::path& file, std::error_code& error);

/// The number of the process that holds this lock; 0 if none does, or if it has not written its
/// number yet. Leaves the file as it is.
long InstanceLockHolder(const std::filesystem::path& file);

}  // namespace Korvex3Sync::os
