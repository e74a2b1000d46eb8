#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

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

    /// XDG_RUNTIME_DIR and XDG_STATE_HOME.
    std::vector<std::pair<std::string, std::string>> Environment() const;
    /// Where sockets and lock files lie, and where log files do. The programs make both folders.
    std::filesystem::path Runtime() const { return m_path / "r" / "korvex3sync"; }
    std::filesystem::path Logs() const { return m_path / "s" / "korvex3sync"; }
    /// For what else a test needs.
    const std::filesystem::path& Path() const { return m_path; }

    /// The processes that run with these folders now.
    std::vector<pid_t> Processes() const;

private:
    std::filesystem::path m_path;
    pid_t m_guard = -1;
    int m_guardEnd = -1;
};

/// The shared-memory objects of the device service that this user has.
std::vector<std::string> SharedMemoryObjects();

}  // namespace Korvex3Sync::tests
