#pragma once

#include <QList>
#include <QObject>
#include <QProcess>
#include <QString>
#include <QThread>
#include <QTimer>
#include <QVariant>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Korvex3Sync/Status.h"
#include "Korvex3Sync/Types.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Event.h"
#include "service/CachedSettings.h"
#include "service/ForwardedOperations.h"
#include "service/ImageSetDelivery.h"
#include "service/ReconnectConfiguration.h"
#include "service/ScanWatchdog.h"
#include "service/ServiceProcesses.h"
#include "service/SetAccount.h"
#include "service/StatusDelivery.h"

namespace Korvex3Sync {

/// The library's client of the device service. It forwards every exported operation to the service,
/// hands what the service sends to the callbacks of the application, and reconnects when the images
/// stop. A process has one; it addresses one device, whatever handle the application passes.
///
/// An operation logs its arguments and its result, and returns the status of the service. Without a
/// connected device it returns 6, and neither logs nor remembers anything. A setter remembers its
/// value even if the service refuses it. Exceptions: the comments below.
///
/// Threads: operations run on the threads of their callers, everything that the service sends and
/// both watchdogs on the worker thread. Locks: m_csService is held during each call of the service,
/// during Init (but for its pause) and during ConnectInner, and never together with the lock of a
/// callback. The caches and the scan watchdog have locks of their own, which are taken last.
class zr3DHandiSyncQT : public QObject {
    Q_OBJECT

public:
    /// Reads the configuration and starts the worker thread. The parent is ignored, because the
    /// object lives on its own thread.
    explicit zr3DHandiSyncQT(QObject* parent = nullptr);
    /// Ends and joins the worker thread. The hub and the service go on. Not for the worker thread,
    /// so not in a callback.
    ~zr3DHandiSyncQT() override;

    /// Starts hub and service, and waits for cameras: about 13 s. False without cameras, or if a
    /// process does not start. Needs a QCoreApplication. To be called by one thread, before
    /// anything else.
    bool Init();

    // What needs no connected device: 6 without the service link.

    /// 3 for a null type. Each name is a new buffer of 260 bytes for the caller.
    RETSTATUS GetCamerasInformation(const char* cameraType, std::vector<char*>& names,
                                    std::vector<int>& widths, std::vector<int>& heights,
                                    std::vector<bool>& isColor, int& count);
    /// 3 for a null type.
    RETSTATUS GetCameraCount(const char* cameraType, int& count);
    /// The handle is the device's id afterwards, whatever the status.
    RETSTATUS ConnectDevice(const char* deviceType, void*& handle);
    RETSTATUS GetFirewareVersion(void* handle, const char* deviceType, const char* projectorId,
                                 std::string& version);
    /// 3 without a device. Afterwards there is none, and the handle is null, whatever the status.
    RETSTATUS DisConnectDevice(void*& handle);

    // With a connected device.

    RETSTATUS ReconnectDevice(void* handle);
    RETSTATUS CloseDeviceCamera(void* handle);
    RETSTATUS GetConnectCameraCount(void* handle, int& count);
    /// The text is a new buffer for the caller.
    RETSTATUS GetCameraSerialNumber(void* handle, int camOrder, char*& serial);
    RETSTATUS GetCameraResolution(void* handle, int camOrder, int& width, int& height);
    /// Sends the text up to its terminator.
    RETSTATUS WriteUserInfomation(void* handle, int index, const char* text, int length);
    /// The text is a new buffer for the caller.
    RETSTATUS ReadUserInfomation(void* handle, int index, char*& text);
    /// Does nothing: 7. The service has its own heartbeat.
    RETSTATUS EnableHeartbeat(void* handle, bool& enable);
    RETSTATUS Project(void* handle, PROJECTWORKTYPES type);
    RETSTATUS SetProjectorBrightness(void* handle, int level);
    RETSTATUS GetProjectorBrightness(void* handle, int& level);
    RETSTATUS EnableBlueLaser(void* handle, LASERWORKMODE mode, bool enable);
    RETSTATUS EnableIRLaser(void* handle, bool enable);
    RETSTATUS SetStrobeControlledByTrigger(void* handle, CONTROLROUTE route, STROBE_STATE state);
    RETSTATUS SetStrobeDutioRatio(void* handle, int texture, int ratio, int ratioWithTexture);
    RETSTATUS GetStrobeDutioRatio(void* handle, int& texture, int& ratio, int& ratioWithTexture);
    RETSTATUS SetLaserLineDutioRatio(void* handle, int ratio);
    RETSTATUS GetLaserLineDutioRatio(void* handle, int& ratio);
    RETSTATUS SetProjectDutioRatio(void* handle, int ratio);
    RETSTATUS GetProjectDutioRatio(void* handle, int& ratio);
    RETSTATUS SetIRLaserDutioRatio(void* handle, int ratio);
    RETSTATUS GetIRLaserDutioRatio(void* handle, int& ratio);
    RETSTATUS SetVideoTriggerPeriod(void* handle, int period);
    RETSTATUS GetVideoTriggerPeriod(void* handle, int& period);
    /// Disabling the trigger stops the scan watchdog. Enabling it does not start it; the first
    /// image set does.
    RETSTATUS EnableVideoTrigger(void* handle, CAMERA_TRIGGER_MODE mode, bool enable);
    /// 0 while a reconnect runs.
    RETSTATUS SetDistanceIndicate(void* handle, DISTANCESTATUS state);
    RETSTATUS SetCameraExposureAndGain(void* handle, int camOrder, double exposure, int gain);
    RETSTATUS GetCameraExposureAndGain(void* handle, int camOrder, double& exposure, int& gain);
    /// A null function or context ends the callback and its watchdog. If the service refuses, the
    /// previous callback stays.
    RETSTATUS SetScanCallBackFunction(void* handle, ScanCallBackFunction callback, void* context);
    RETSTATUS SetStatusCallBackFunction(void* handle, StatusCallBackFunction callback,
                                        void* context);
    RETSTATUS SnapColorImage(void* handle, std::vector<unsigned char*>& images, int& width,
                             int& height, int camOrder, double& exposure, int& gain,
                             CONTROLROUTE route);
    /// Asks nobody: the figures have come with the image sets. Logs nothing.
    RETSTATUS GetScanStatistics(void* handle, ScanStatistics& statistics);

public Q_SLOTS:
    // Worker thread only. The order of the slots is fixed.

    void recvMessage(QString pluginName, QString msgName, QList<QVariant> list, QString verion);
    void recvCallback(QString pluginName, QString callbackName, QList<QVariant> list,
                      QString verion);
    void OnStatusTimerOut();
    void OnCallbackTimerOut();
    void OnDeviceServiceStateChanged(QProcess::ProcessState newState);
    void ReConnect();
    void StartStatusTimer(bool bStart = true);
    void StartScanCallBackTimer(bool bStart = true);

private:
    using Service = std::shared_ptr<SyncInterface>;

    Service TheService() const;
    /// Null without a connected device.
    Service ConnectedService() const;
    /// Calls `call(service, id)` with the service lock held.
    template <class Call>
    RETSTATUS CallService(const Service& service, Call call);

    // The frames of the operations, from the table of ForwardedOperations.h.

    template <class... Values>
    RETSTATUS Set(const Setting<Values...>& setting, const Values&... values);
    template <class... Values>
    RETSTATUS Get(const Query<Values...>& query, Values&... values);
    template <class... Values>
    RETSTATUS GetOf(const CameraQuery<Values...>& query, int camOrder, Values&... values);

    /// Runs on the worker thread and waits for the end.
    void OnWorkThread(const std::function<void()>& work);
    void customEvent(QEvent* event) override;
    bool StartScanServiceProcess();
    bool StartLink();
    bool ConnectInner();
    void PushExposuresAndGains(SyncInterface& service, const CachedSettings& settings);
    bool PushSettings(SyncInterface& service, const CachedSettings& settings);
    void PushCallbacksAndTrigger(SyncInterface& service, const CachedSettings& settings);
    template <class... Values>
    RETSTATUS Push(SyncInterface& service, const CachedSettings& settings,
                   const Setting<Values...>& setting) const;
    template <class... Values>
    void PushLogged(SyncInterface& service, const CachedSettings& settings,
                    const Setting<Values...>& setting) const;
    void Pause(std::chrono::milliseconds nominal) { m_ending.Wait(nominal); }

    // The members are destroyed from the last to the first: first those whose locks an operation
    // may still hold, in the order scan callback, status callback, service.

    mutable os::Mutex m_linkMutex;
    std::shared_ptr<SyncInterface> m_pSyncInterface KORVEX_GUARDED_BY(m_linkMutex);
    os::Mutex m_workMutex;
    std::function<void()> m_work KORVEX_GUARDED_BY(m_workMutex);
    /// 0: not connected.
    std::atomic<qint64> m_llDeviceId{0};
    os::Event m_ending;
    os::Event m_ended;  // the worker thread touches nothing of the client any more
    os::CriticalSection m_csService;
    /// What the service was told last, for the reconnect. Changed with m_csService held.
    std::atomic<bool> m_statusCallbackOn{false};
    std::atomic<bool> m_scanCallbackOn{false};
    StatusDelivery m_status;
    ImageSetDelivery m_imageSets;
    SetAccount m_account;
    const ReconnectConfiguration m_configuration;
    SettingsCache m_settings;
    ServiceProcesses m_processes;
    int m_iStatusNoticeCount = 0;
    QTimer* const m_pStatusTimer;
    ScanWatchdog m_scanWatchdog;
    QTimer* const m_pRetryTimer;
    std::atomic<bool> m_bReconnecting{false};
    int m_iReconnectCount = 0;
    QThread* const m_pWorkThread;
};

}  // namespace Korvex3Sync
