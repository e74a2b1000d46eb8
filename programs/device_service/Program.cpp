#include "device_service/Program.h"

#include <Korvex3Sync/Discovery.h>

#include <QCoreApplication>
#include <QMetaObject>
#include <QProcess>
#include <QTimer>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <system_error>

#include "device_service/Version.h"
#include "device_service/core/DeviceService.h"
#include "device_service/core/ServiceLog.h"
#include "platform/os/InstanceLock.h"
#include "platform/os/InterruptWatch.h"
#include "platform/os/LogFiles.h"
#include "platform/os/Print.h"
#include "platform/os/Process.h"
#include "platform/os/UserFolders.h"

namespace Korvex3Sync::device_service {

namespace {

constexpr std::chrono::milliseconds kCloseLimit{10000};
constexpr std::chrono::minutes kCleanPeriod{1};
constexpr std::chrono::milliseconds kOldServiceLimit{500};

int Complain(ExitCode code, const std::string& what) {
    os::PrintError("ZrSyncService.exe: %s\n", what.c_str());
    return static_cast<int>(code);
}

/// Looks for cameras once, so that a device library that has something to say about its set-up says
/// it while somebody may read standard error.
void LogCameras() {
    constexpr const char* kType = "KV00";
    int count = 0;
    GetCameraCount(kType, count);
    KORVEX_LOG(kServiceLog) << "cameras of type " << kType << ": " << count;
}

void EndApplication() {
    QMetaObject::invokeMethod(QCoreApplication::instance(), "quit", Qt::QueuedConnection);
}

/// The hub stands beside this program. Called again and again while there is none.
void StartHub() {
    static bool refused = false;  // used on one thread only
    const QString folder = QCoreApplication::applicationDirPath();
    const bool started = QProcess::startDetached(folder + "/hub.exe", {}, folder);
    if (started) {
        KORVEX_LOG(kServiceLog) << "no hub runs; started one";
    } else if (!refused) {
        KORVEX_LOG_ERROR(kServiceLog) << "no hub runs, and hub.exe cannot be started";
    }
    refused = !started;
}

int RunLocked(const std::filesystem::path& logFolder) {
    const os::LogFiles log(logFolder, "ZrSyncService");
    KORVEX_LOG(kServiceLog) << "device service " << kVersion << " starts";
    LogCameras();
    DeviceService service({.version = kVersion, .startHub = StartHub, .stop = EndApplication});
    std::string reason;
    if (!service.Start(reason)) {
        KORVEX_LOG_ERROR(kServiceLog) << "cannot start: " << reason;
        return Complain(ExitCode::NotStarted, "cannot start: " + reason);
    }
    os::BecomeBackgroundProcess();
    const os::InterruptWatch watch(EndApplication, static_cast<int>(ExitCode::Done));
    QTimer cleaning;
    QObject::connect(&cleaning, &QTimer::timeout, [&log] { log.Clean(); });
    cleaning.start(kCleanPeriod);
    QCoreApplication::exec();
    KORVEX_LOG(kServiceLog) << "ends on request";
    if (!service.Stop(kCloseLimit)) {
        // The device still uses the service's objects, so they cannot be destroyed.
        KORVEX_LOG_ERROR(kServiceLog) << "the device does not close; ends without it";
        std::_Exit(static_cast<int>(ExitCode::DeviceHangs));
    }
    return static_cast<int>(ExitCode::Done);
}

/// Whoever replaces a service may have killed the old one a moment ago.
os::File TakeLock(const std::filesystem::path& file, std::error_code& error) {
    os::File lock = os::TakeInstanceLock(file, error);
    if (error == std::errc::resource_unavailable_try_again &&
        os::OtherProcess(os::InstanceLockHolder(file)).WaitForEnd(kOldServiceLimit)) {
        lock = os::TakeInstanceLock(file, error);
    }
    return lock;
}

/// Locks out other services of this user as long as it runs.
int Run(int count, char** arguments) {
    if (count > 1) {
        return Complain(ExitCode::Usage, "takes no arguments");
    }
    std::string reason;
    const std::filesystem::path folder = os::RuntimeFolder(reason);
    if (folder.empty()) {
        return Complain(ExitCode::NotStarted, reason);
    }
    const std::filesystem::path logFolder = os::LogFolder(reason);
    if (logFolder.empty()) {
        return Complain(ExitCode::NotStarted, reason);
    }
    std::error_code error;
    const os::File lock = TakeLock(folder / "service.lock", error);
    if (error == std::errc::resource_unavailable_try_again) {
        const long holder = os::InstanceLockHolder(folder / "service.lock");
        return Complain(ExitCode::RunsAlready, "runs already as process " + std::to_string(holder));
    }
    if (error) {
        return Complain(ExitCode::NotStarted, "cannot lock " + (folder / "service.lock").string() +
                                                  ": " + error.message());
    }
    const QCoreApplication application(count, arguments);
    return RunLocked(logFolder);
}

}  // namespace

int RunProgram(int count, char** arguments) {
    try {
        os::TurnWriteSignalsIntoErrors();
        return Run(count, arguments);
    } catch (const std::exception& error) {
        return Complain(ExitCode::NotStarted, error.what());
    }
}

}  // namespace Korvex3Sync::device_service
