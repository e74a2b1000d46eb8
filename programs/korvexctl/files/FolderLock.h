#pragma once

#include <filesystem>

#include "platform/os/File.h"

namespace Korvex3Sync::korvexctl {

/// Keeps other programs of this kind from filling a folder while it lives. Leaves nothing behind,
/// also when the process is killed. A file system without locks gives none, and no error.
class FolderLock {
public:
    /// The folder must exist. Throws CommandError(NotWritable) when another one has the lock.
    explicit FolderLock(const std::filesystem::path& folder);

private:
    os::File m_folder;
};

}  // namespace Korvex3Sync::korvexctl
