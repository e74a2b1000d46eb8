#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace Korvex3Sync::korvexctl {

/// One of the two programs of the device service. They lie beside this program.
struct ServiceProgram {
    const char* word;      ///< what a person calls it
    const char* file;      ///< its file name, on every system
    const char* lockFile;  ///< in the runtime folder
    const char* log;       ///< what the names of its log files begin with
};
inline constexpr ServiceProgram kHub{"hub", "hub.exe", "hub.lock", "hub"};
inline constexpr ServiceProgram kService{"service", "ZrSyncService.exe", "service.lock",
                                         "ZrSyncService"};

/// The process that runs the program for this user; 0 if none does. Throws CommandError if the
/// folder of sockets and lock files is refused or its path is too long.
long ProcessOf(const ServiceProgram& program);

/// The folder of the log files. Throws CommandError if there is none.
std::filesystem::path ServiceLogFolder();

/// The newest log file of the program; empty if there is none.
std::filesystem::path NewestLogOf(const ServiceProgram& program);

/// The last lines of a file, the oldest first; nothing if it cannot be read. Looks at the last
/// mebibyte only.
std::vector<std::string> LastLines(const std::filesystem::path& file, std::size_t most);

}  // namespace Korvex3Sync::korvexctl
