#pragma once

#include <QObject>
#include <QProcess>
#include <QString>

#include <chrono>
#include <memory>

#include "platform/os/Event.h"

namespace Korvex3Sync {

/// The two processes of service mode, "hub.exe" and "ZrSyncService.exe", in the application
/// directory, and the scripts that restart the USB hubs of the head. Everything but the constructor
/// runs on one thread, which has an event loop: the worker thread of the client.
class ServiceProcesses {
public:
    /// `client` has the slot OnDeviceServiceStateChanged(QProcess::ProcessState). `ending` cuts all
    /// pauses short.
    ServiceProcesses(QObject& client, QString applicationDirectory, os::Event& ending);
    ServiceProcesses(const ServiceProcesses&) = delete;
    ServiceProcesses& operator=(const ServiceProcesses&) = delete;

    /// Ends the service that this object started; false if it has started none.
    bool EndService();
    /// Restarts the USB hubs, then starts the service, and before the first start the hub. Blocks
    /// for about 10 s. False if one of them does not start.
    bool Start();
    /// For the end of the thread: both processes go on, and nobody watches them any more.
    void LeaveRunning();

private:
    bool StartHub();
    bool StartService();
    void RestartUsbHubs();
    /// A process that runs; null if it does not start.
    std::unique_ptr<QProcess> Run(const char* program, QProcess::ProcessChannelMode mode) const;
    void Pause(std::chrono::milliseconds nominal) { m_ending.Wait(nominal); }

    QObject& m_client;
    const QString m_applicationDirectory;
    os::Event& m_ending;
    QProcess* m_pServiceProcess = nullptr;
    QProcess* m_pHubProcess = nullptr;  // not running if it did not start
};

}  // namespace Korvex3Sync
