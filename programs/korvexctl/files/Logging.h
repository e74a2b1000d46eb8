#pragma once

#include <memory>

namespace Korvex3Sync::korvexctl {

class StandardOutput;

/// Where the log lines of the library go while it lives: warnings and worse to standard error, all
/// of them when `verbose`, and all of them to the log file of `output`, if it has one. No log files
/// are made elsewhere. One per process.
class Logging {
public:
    Logging(const char* program, const StandardOutput& output, bool verbose, bool logFile);
    ~Logging();
    Logging(const Logging&) = delete;
    Logging& operator=(const Logging&) = delete;

private:
    class FileSink;
    std::unique_ptr<FileSink> m_sink;
};

}  // namespace Korvex3Sync::korvexctl
