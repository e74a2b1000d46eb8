#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Korvex3Sync::korvexctl {

/// How the program ends. The numbers are part of its interface: scripts compare them.
enum class ExitCode : int {
    Done = 0,
    Unexpected = 1,
    Usage = 2,
    NoCamera = 3,
    NotConnected = 4,
    SetsMissing = 5,
    NotWritable = 6,
    DiskFull = 7,
    HeadRefused = 8,
    DeviceRefused = 9,
    ProfileRefused = 10,
    Different = 11,
    NotOnUsb3 = 12,
    NotHealthy = 13,
    Warnings = 14,
    SelftestFailed = 15,
    ServiceNotRunning = 16,
    ServiceFailed = 17,
    NotInServiceMode = 18,
    Interrupted = 130
};

struct ExitCodeMeaning {
    ExitCode code;
    std::string_view meaning;
};
/// All of them, in the order of their numbers.
std::span<const ExitCodeMeaning> ExitCodeMeanings();

/// The table of exit codes as text, one line each, for the help.
std::string ExitCodeTable();

/// Ends a command with an exit code and a message.
class CommandError : public std::runtime_error {
public:
    CommandError(ExitCode code, const std::string& message)
        : std::runtime_error(message), m_code(code) {}
    ExitCode Code() const { return m_code; }

private:
    ExitCode m_code;
};

}  // namespace Korvex3Sync::korvexctl
