#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>

namespace Korvex3Sync::os {

/// Which log files of a program stay.
struct LogLimits {
    std::size_t files = 10;
    std::chrono::hours age{24 * 30};
};

/// Deletes the log files of a program that are beyond the limits, the oldest first. The newest one
/// always stays. Errors are ignored: another process may clean up at the same time.
void CleanLogFiles(const std::filesystem::path& folder, const std::string& program,
                   const LogLimits& limits = {});

/// The log file of a program that was begun last; empty if there is none.
std::filesystem::path NewestLogFile(const std::filesystem::path& folder,
                                    const std::string& program);

/// Writes all log records of this process to FOLDER/PROGRAM.DATE-TIME.PROCESS while it exists. A
/// file is continued in a new one at 10 MiB. Each record is in the file when the call that logs it
/// returns. Nothing is written while the disk is full, and nothing to standard error. One per
/// process.
class LogFiles {
public:
    /// Deletes what is beyond the limits. The folder exists.
    LogFiles(const std::filesystem::path& folder, std::string program);
    ~LogFiles();
    LogFiles(const LogFiles&) = delete;
    LogFiles& operator=(const LogFiles&) = delete;

    /// For a program that runs for long, about once a minute: keeps the files within the limits.
    void Clean() const { CleanLogFiles(m_folder, m_program); }

private:
    const std::filesystem::path m_folder;
    const std::string m_program;
};

}  // namespace Korvex3Sync::os
