#pragma once

#include <atomic>
#include <string>
#include <string_view>

#include "platform/os/StandardOutput.h"

namespace Korvex3Sync::korvexctl {

/// Takes standard output out of the library's reach: while it lives, what the library prints is
/// discarded; only Write reaches the real standard output. One per process, made before the library
/// is called.
class StandardOutput {
public:
    /// `verbose`: what the library prints shall be seen.
    explicit StandardOutput(bool verbose) : m_verbose(verbose) {}
    ~StandardOutput();
    StandardOutput(const StandardOutput&) = delete;
    StandardOutput& operator=(const StandardOutput&) = delete;

    /// What the library prints from now on goes to standard error if verbose, and is appended to
    /// this file (or FIFO, or device) unless the name is empty; control characters are escaped. To
    /// be called at most once. Throws CommandError when the file cannot be opened.
    void ShowPrints(const std::filesystem::path& logFile);
    /// Writes the whole text. Throws CommandError (NotWritable, DiskFull); without a message when
    /// the reader of a pipe has gone, because it wants no more.
    void Write(std::string_view text);
    /// Appends a line to the log file; nothing without one. Never throws: a log that cannot be
    /// written costs no scan, only a warning, once. Any thread.
    void WriteLog(std::string_view line) const noexcept;

private:
    void OpenLog(const std::filesystem::path& file);
    void WarnOfLog(const std::error_code& error) const noexcept;

    const bool m_verbose;
    os::RealStandardOutput m_real;
    os::File m_log;
    std::filesystem::path m_logFile;
    mutable std::atomic<bool> m_warned{false};
};

}  // namespace Korvex3Sync::korvexctl
