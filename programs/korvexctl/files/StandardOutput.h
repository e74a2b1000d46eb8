#pragma once

#include <atomic>
#include <string>
#include <string_view>

#include "platform/os/StandardOutput.h"

namespace Korvex3Sync::korvexctl {

/// Takes standard output out of the library's reach: while it lives, what the library prints is
/// discarded, or goes to standard error (`verbose`), or into the log file; only Write reaches the
/// real standard output. One per process, made before the library is called.
class StandardOutput {
public:
    explicit StandardOutput(bool verbose);
    ~StandardOutput();
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;

    /// Appends what the library prints to this file (or FIFO, or device) from now on. To be called
    /// at most once. Throws CommandError when it cannot be opened.
    void LogTo(const std::string& file);
    /// Writes the whole text. Throws CommandError (NotWritable, DiskFull).
    void Write(std::string_view text);
    /// Appends to the log file; nothing without one. Never throws: a log that cannot be written
    /// costs no scan, only a warning, once. Any thread.
    void WriteLog(std::string_view text) const noexcept;

private:
    void WarnOfLog(const std::error_code& error) const noexcept;

    os::RealStandardOutput m_real;
    os::File m_log;
    std::string m_logFile;
    mutable std::atomic<bool> m_warned{false};
};

}  // namespace Korvex3Sync::korvexctl
