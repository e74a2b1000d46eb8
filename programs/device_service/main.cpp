#include <Korvex3Sync/Discovery.h>

#include <QCoreApplication>
#include <QProcess>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string_view>

#include "background/BackgroundProgram.h"
#include "device_service/Version.h"
#include "device_service/core/DeviceService.h"
#include "device_service/core/ServiceLog.h"
#include "platform/os/Log.h"

namespace Korvex3Sync::device_service {

namespace {

/// The exit code if the device cannot be closed in time.
constexpr int kDeviceHangs = 4;
constexpr std::chrono::milliseconds kCloseLimit{10000};

/// Looks for cameras once, so that a device library that has something to say about its set-up says
/// it while somebody may read standard error.
void LogCameras() {
    constexpr const char* kType = "KV00";
    int count = 0;
    GetCameraCount(kType, count);
    KORVEX_LOG(kServiceLog) << "cameras of type " << kType << ": " << count;
}

/// Leaves out the record of one operation, which would be most of the log: the service asks for the
/// figures of direct mode with each set.
class WithoutFigures : public google::base::Logger {
public:
    explicit WithoutFigures(google::base::Logger* log) : m_log(log) {}

    void Write(bool flush, std::time_t time, const char* record, std::size_t length) override {
        const std::string_view text(record, length);
        if (!text.ends_with("] GetScanStatistics enter\n")) {
            m_log->Write(flush, time, record, length);
        }
    }
    void Flush() override { m_log->Flush(); }
    google::uint32 LogSize() override { return m_log->LogSize(); }

private:
    google::base::Logger* const m_log;  // glog's own
};

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

/// Stops the service; its connections end in order.
void EndService(DeviceService* service) {
    if (!service->Stop(kCloseLimit)) {
        // The device still uses the service's objects, so they cannot be destroyed.
        KORVEX_LOG_ERROR(kServiceLog) << "the device does not close; ends without it";
        std::_Exit(kDeviceHangs);
    }
    delete service;
}

std::shared_ptr<void> BeginService(const std::function<void()>& askToEnd, std::string& reason) {
    auto log = std::make_unique<WithoutFigures>(google::base::GetLogger(google::GLOG_INFO));
    google::base::SetLogger(google::GLOG_INFO, log.release());  // glog owns it
    // NOLINTNEXTLINE(clang-analyzer-cplusplus.NewDeleteLeaks)
    KORVEX_LOG(kServiceLog) << "device service " << kVersion << " starts";
    LogCameras();
    const std::shared_ptr<DeviceService> service(
        new DeviceService({.version = kVersion,
                           .virtualHead = qEnvironmentVariable("KORVEX_VIRTUAL_HEAD").toStdString(),
                           .startHub = StartHub,
                           .stop = askToEnd}),
        EndService);
    return service->Start(reason) ? service : nullptr;
}

}  // namespace

}  // namespace Korvex3Sync::device_service

int main(int count, char** arguments) {
    using namespace Korvex3Sync;
    return background::RunInBackground(count, arguments,
                                       {"ZrSyncService.exe", "service.lock", "ZrSyncService"},
                                       device_service::BeginService);
}
