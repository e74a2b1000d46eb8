#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "support/Environment.h"

namespace Korvex3Sync::tests {

/// Folders of their own for the processes of the device service that a test starts. When the object
/// is destroyed, and also when the test program ends in any other way, every process that runs with
/// these folders is killed, by its number, and the folders are removed.
class OwnFolders {
public:
    OwnFolders();
    ~OwnFolders();
    OwnFolders(const OwnFolders&) = delete;
    OwnFolders& operator=(const OwnFolders&) = delete;

    std::vector<std::pair<std::string, std::string>> Environment() const {
        return FoldersIn(m_path);
    }
    /// Where sockets and lock files lie, and where log files do. The programs make both folders.
    std::filesystem::path Runtime() const { return RuntimeFolderIn(m_path); }
    std::filesystem::path Logs() const { return LogFolderIn(m_path); }
    /// For what else a test needs.
    const std::filesystem::path& Path() const { return m_path; }

    /// The processes that run with these folders now.
    std::vector<long> Processes() const;

private:
    std::filesystem::path m_path;
    long m_guard = -1;
    int m_guardEnd = -1;
};

/// The shared-memory objects of the device service that this user has.
std::vector<std::string> SharedMemoryObjects();

}  // namespace Korvex3Sync::tests
