#pragma once

#include <memory>

namespace Korvex3Sync::korvexctl {

class StandardOutput;

/// Where the log lines of the library go while it lives: errors to standard error, all of them when
/// `verbose`, and all of them to the log file of `output`, if it has one; control characters are
/// escaped. No log files are made elsewhere. One per process.
class Logging {
public:
    Logging(const char* program, const StandardOutput& output, bool verbose, bool logFile);
    ~Logging();
    Logging(const Logging&) = delete;
    Logging& operator=(const Logging&) = delete;

private:
    class Sink;
    std::unique_ptr<Sink> m_sink;
};

}  // namespace Korvex3Sync::korvexctl
