#include "korvexctl/cli/ExitCodes.h"

#include <array>
#include <iomanip>
#include <sstream>
#include <string_view>
#include <utility>

namespace Korvex3Sync::korvexctl {

namespace {

using Row = std::pair<ExitCode, std::string_view>;

constexpr std::array kTable{
    Row{ExitCode::Done, "done; a scan: all sets asked for arrived"},
    Row{ExitCode::Unexpected, "an error that should not happen"},
    Row{ExitCode::Usage, "unknown option or setting, missing or bad value"},
    Row{ExitCode::NoCamera, "no camera found"},
    Row{ExitCode::NotConnected, "the head could not be connected, or no board answers"},
    Row{ExitCode::SetsMissing, "a scan: no set came within the timeout"},
    Row{ExitCode::NotWritable, "the output cannot be written"},
    Row{ExitCode::DiskFull, "the disk is full"},
    Row{ExitCode::HeadRefused, "the head file of --virtual was refused"},
    Row{ExitCode::DeviceRefused,
        "the connected head refused an operation, or reads back something else"},
    Row{ExitCode::ProfileRefused, "a profile cannot be read or has an error; nothing was sent"},
    Row{ExitCode::Different, "profile diff: the file and the head differ"},
    Row{ExitCode::NotOnUsb3, "usb: the head is not on a USB 3 port at USB 3 speed"},
    Row{ExitCode::NotHealthy, "doctor: a fault; the head cannot scan as it should"},
    Row{ExitCode::Warnings, "doctor: the head scans, with warnings"},
    Row{ExitCode::SelftestFailed, "selftest: a step failed"},
    Row{ExitCode::Interrupted,
        "interrupted (Ctrl-C, SIGTERM, SIGHUP) and disconnected; what stays on is told"},
};

}  // namespace

std::string ExitCodeTable() {
    std::ostringstream text;
    text << "Exit codes:\n";
    for (const auto& [code, meaning] : kTable) {
        text << std::setw(5) << static_cast<int>(code) << "  " << meaning << '\n';
    }
    return text.str();
}

}  // namespace Korvex3Sync::korvexctl
