#include "korvexctl/cli/ExitCodes.h"

#include <array>
#include <iomanip>
#include <sstream>

namespace Korvex3Sync::korvexctl {

namespace {

using Row = ExitCodeMeaning;

constexpr std::array kTable{
    Row{ExitCode::Done, "success; scan: all requested sets arrived"},
    Row{ExitCode::Unexpected, "unexpected error"},
    Row{ExitCode::Usage, "unknown option or setting, missing or invalid value"},
    Row{ExitCode::NoCamera, "no camera found"},
    Row{ExitCode::NotConnected, "cannot connect to the head, or the board does not answer"},
    Row{ExitCode::SetsMissing, "scan: no set arrived within the timeout"},
    Row{ExitCode::NotWritable, "cannot write the output"},
    Row{ExitCode::DiskFull, "the disk is full"},
    Row{ExitCode::HeadRefused, "the head file of --virtual or KORVEX_VIRTUAL_HEAD is invalid"},
    Row{ExitCode::DeviceRefused,
        "the head refused an operation, or a setting reads back differently"},
    Row{ExitCode::ProfileRefused, "a profile cannot be read or is invalid; nothing was sent"},
    Row{ExitCode::Different, "profile diff: the file and the head differ"},
    Row{ExitCode::NotOnUsb3, "usb: the head is not connected at USB 3 speed"},
    Row{ExitCode::NotHealthy, "doctor: fault found; the head cannot scan properly"},
    Row{ExitCode::Warnings, "doctor: the head can scan, with warnings"},
    Row{ExitCode::SelftestFailed, "selftest: a step failed"},
    Row{ExitCode::Interrupted,
        "interrupted (Ctrl-C, SIGTERM, SIGHUP) and disconnected; reports what is still on"},
};

}  // namespace

std::span<const ExitCodeMeaning> ExitCodeMeanings() {
    return kTable;
}

std::string ExitCodeTable() {
    std::ostringstream text;
    text << "Exit codes:\n";
    for (const auto& [code, meaning] : kTable) {
        text << std::setw(5) << static_cast<int>(code) << "  " << meaning << '\n';
    }
    return text.str();
}

}  // namespace Korvex3Sync::korvexctl
