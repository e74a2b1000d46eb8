#include "service/ServiceProcesses.h"

#include <QDir>
#include <QStringList>

#include <utility>
#include <vector>

#include "platform/os/InheritedStreams.h"
#include "platform/os/Process.h"
#include "service/ServiceLog.h"

namespace Korvex3Sync {
namespace {

using std::chrono::milliseconds;

constexpr char kHubProgram[] = "hub.exe";
constexpr char kServiceProgram[] = "ZrSyncService.exe";
/// Real time, because the system decides how long a start takes.
constexpr int kStartLimitMs = 30000;

/// Runs a script of the host's current directory to its end.
void RunScript(const char* name) {
    QProcess::execute(QDir::current().absoluteFilePath(name), {});
}

/// Keeps a process object without a thread, because deleting it would end the process.
void KeepForever(QProcess* process) {
    static auto& kept = *new std::vector<QProcess*>;
    kept.push_back(process);
}

void LeaveOneRunning(QProcess*& process) {
    if (process == nullptr) {
        return;
    }
    process->disconnect();
    if (process->state() == QProcess::NotRunning) {
        delete process;
    } else {
        process->setParent(nullptr);
        KeepForever(process);
    }
    process = nullptr;
}

}  // namespace

ServiceProcesses::ServiceProcesses(QObject& client, QString applicationDirectory, os::Event& ending)
    : m_client(client), m_applicationDirectory(std::move(applicationDirectory)), m_ending(ending) {}

bool ServiceProcesses::EndService() {
    if (m_pServiceProcess == nullptr) {
        return false;
    }
    m_pServiceProcess->kill();
    m_pServiceProcess->deleteLater();
    m_pServiceProcess = nullptr;
    return true;
}

bool ServiceProcesses::Start() {
    // Both texts are part of the log trace, whatever happened before.
    LogDebug("no device start disable enable usb!!!!!!!!!!!!!!!");
    KORVEX_LOG(kServiceLog) << "no device start disable enable usb!!!!!!!!!!!!!!!!";
    Pause(milliseconds(3000));
    RestartUsbHubs();
    LogBoth("Init GetCameraCount failed!");
    return (m_pHubProcess != nullptr || StartHub()) && StartService();
}

void ServiceProcesses::RestartUsbHubs() {
    RunScript("restart_VID0219_PID0813_REV0221.bat");
    Pause(milliseconds(3000));
    RunScript("restart_VID05E3_PID0620_REV2307.bat");
    Pause(milliseconds(4000));
}

std::unique_ptr<QProcess> ServiceProcesses::Run(const char* program,
                                                QProcess::ProcessChannelMode mode) const {
    auto process = std::make_unique<os::StreamsOnlyProcess<QProcess>>();
    process->setProcessChannelMode(mode);
    process->setWorkingDirectory(m_applicationDirectory);
    process->start(m_applicationDirectory + QDir::separator() + program, QStringList(),
                   QIODevice::ReadWrite);
    if (!process->waitForStarted(kStartLimitMs)) {
        return nullptr;
    }
    // What a process prints is discarded as it comes: a full pipe would block it.
    process->closeReadChannel(QProcess::StandardOutput);
    process->closeReadChannel(QProcess::StandardError);
    return process;
}

bool ServiceProcesses::StartHub() {
    os::EndProcesses(kHubProgram);
    os::EndProcesses(kServiceProgram);
    Pause(milliseconds(500));
    // A hub that does not start leaves this object behind, so that no later start tries again.
    m_pHubProcess = new QProcess(&m_client);
    std::unique_ptr<QProcess> process = Run(kHubProgram, QProcess::SeparateChannels);
    if (process == nullptr) {
        LogBoth("Start hub process failed.");
        return false;
    }
    delete std::exchange(m_pHubProcess, process.release());
    return true;
}

bool ServiceProcesses::StartService() {
    std::unique_ptr<QProcess> process = Run(kServiceProgram, QProcess::ForwardedOutputChannel);
    if (process == nullptr) {
        LogBoth("Start Device Service process failed.");
        return false;
    }
    m_pServiceProcess = process.release();
    QObject::connect(m_pServiceProcess, SIGNAL(stateChanged(QProcess::ProcessState)), &m_client,
                     SLOT(OnDeviceServiceStateChanged(QProcess::ProcessState)));
    return true;
}

void ServiceProcesses::LeaveRunning() {
    LeaveOneRunning(m_pServiceProcess);
    LeaveOneRunning(m_pHubProcess);
}

}  // namespace Korvex3Sync
