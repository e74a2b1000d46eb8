#include "korvexctl/service/ServiceSwitch.h"

#include <Korvex3Sync/Connection.h>
#include <Korvex3Sync/Discovery.h>

#include <QCoreApplication>
#include <chrono>
#include <filesystem>

#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/cli/Interrupt.h"
#include "korvexctl/cli/Outcome.h"
#include "korvexctl/head/HeadChoice.h"
#include "korvexctl/head/ServiceUse.h"
#include "korvexctl/service/ServiceLink.h"
#include "korvexctl/service/ServicePrograms.h"
#include "korvexctl/service/ServiceStart.h"
#include "korvexctl/service/ServiceStatus.h"
#include "platform/os/FileName.h"

namespace Korvex3Sync::korvexctl {

namespace {

namespace fs = std::filesystem;

std::unique_ptr<QCoreApplication> MakeApplication() {
    static int count = 1;
    static char name[] = "korvexctl";
    static char* arguments[] = {name, nullptr};
    return std::make_unique<QCoreApplication>(count, arguments);
}

void RequirePrograms() {
    const fs::path folder = QCoreApplication::applicationDirPath().toStdU16String();
    for (const ServiceProgram& program : {kHub, kService}) {
        std::error_code unknown;
        if (!fs::is_regular_file(folder / program.file, unknown)) {
            throw CommandError(
                ExitCode::ServiceFailed,
                "cannot start " + os::TextOf(folder / program.file) + ": no such file");
        }
    }
}

/// A busy service may answer late, and one that is in use must not be taken for a broken one.
ServiceStatus WaitForServiceStatus() {
    constexpr std::chrono::seconds kBusyLimit{10};
    ServiceStatus status;
    AnswersWithin(
        kBusyLimit,
        [&status] {
            status = AskServiceStatus();
            return status.service.state.has_value();
        },
        [&status] { return status.service.process != 0; });
    return status;
}

/// The running service is about to be ended and started again.
void LookAtRunningService(const link::ServiceState& running, const std::string& head) {
    const std::string process = "process " + std::to_string(running.process);
    if (running.clientProcess != 0) {
        throw CommandError(ExitCode::ServiceFailed,
                           "process " + std::to_string(running.clientProcess) +
                               " is using the device service, and --service would start it again; "
                               "end that process first");
    }
    if (const std::string before = running.virtualHead.toStdString(); before != head) {
        Say("the running device service (" + process + ") has " + HeadText(before) +
            "; it is started again with " + HeadText(head));
    }
}

}  // namespace

std::unique_ptr<QCoreApplication> SwitchToService(const std::string& virtualHead,
                                                  bool showsProgress) {
    auto application = MakeApplication();
    RequirePrograms();
    const std::string head = HeadOfService(virtualHead);
    if (const ServiceStatus before = WaitForServiceStatus(); before.service.state) {
        LookAtRunningService(*before.service.state, head);
    } else if (before.service.process != 0) {
        Say("the running device service (process " + std::to_string(before.service.process) +
            ") does not answer; it is started again");
    }
    if (!head.empty()) {
        qputenv(kHeadVariable, QByteArray::fromStdString(head));
    }
    if (showsProgress) {
        Say("starting the device service, which takes about 14 seconds");
    }
    SwitchOnDeviceService(true);
    SetThroughService();
    EndIfInterrupted();
    int cameras = 0;
    if (GetCameraCount(HeadChoice().cameraType.c_str(), cameras) != STATUS_SUCCESS) {
        const ServiceStatus now = AskServiceStatus();
        const fs::path log = NewestLogOf(kService);
        throw CommandError(
            ExitCode::ServiceFailed,
            (now.Works() ? "the service does not answer in time" : NotWorkingText(now)) +
                (log.empty() ? "" : "; its log is " + os::TextOf(log)));
    }
    return application;
}

}  // namespace Korvex3Sync::korvexctl
