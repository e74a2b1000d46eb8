#include "korvexctl/cli/ExitCodes.h"

#include <array>
#include <iomanip>
#include <sstream>

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::array kTable{
    ExitCodeMeaning{ExitCode::Done, "success; scan: all requested sets arrived"},
    ExitCodeMeaning{ExitCode::Unexpected, "unexpected error"},
    ExitCodeMeaning{ExitCode::Usage, "unknown option or setting, missing or invalid value"},
    ExitCodeMeaning{ExitCode::NoCamera, "no camera found"},
    ExitCodeMeaning{ExitCode::NotConnected,
                    "cannot connect to the head, or the board does not answer"},
    ExitCodeMeaning{ExitCode::SetsMissing, "scan: no set arrived within the timeout"},
    ExitCodeMeaning{ExitCode::NotWritable, "cannot write the output"},
    ExitCodeMeaning{ExitCode::DiskFull, "the disk is full"},
    ExitCodeMeaning{ExitCode::HeadRefused,
                    "the head file of --virtual or KORVEX_VIRTUAL_HEAD is invalid"},
    ExitCodeMeaning{ExitCode::DeviceRefused,
                    "the head refused an operation, or a setting reads back differently"},
    ExitCodeMeaning{ExitCode::ProfileRefused,
                    "a profile cannot be read or is invalid; nothing was sent"},
    ExitCodeMeaning{ExitCode::Different, "profile diff: the file and the head differ"},
    ExitCodeMeaning{ExitCode::NotOnUsb3, "usb: the head is not connected at USB 3 speed"},
    ExitCodeMeaning{ExitCode::NotHealthy, "doctor: fault found; the head cannot scan properly"},
    ExitCodeMeaning{ExitCode::Warnings, "doctor: the head can scan, with warnings"},
    ExitCodeMeaning{ExitCode::SelftestFailed, "selftest: a step failed"},
    ExitCodeMeaning{ExitCode::ServiceNotRunning,
                    "service status: hub or service does not run, or does not answer"},
    ExitCodeMeaning{ExitCode::ServiceFailed,
                    "service, --service: hub or service did not start or end, or the service is in "
                    "use"},
    ExitCodeMeaning{ExitCode::NotInServiceMode, "--service: not available in service mode"},
    ExitCodeMeaning{
        ExitCode::Interrupted,
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
