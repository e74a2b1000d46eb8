#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <vector>

#include "Korvex3Sync/Status.h"
#include "Korvex3Sync/Types.h"
#include "platform/include/PlatformExport.h"

namespace Korvex3Sync::link {
class Client;
}

/// The client of the device service.
///
/// Every operation is thread-safe and blocks until the service has answered. It returns what the
/// service returns, and changes its outputs only with STATUS_SUCCESS:
///
/// - STATUS_FAILED if no answer arrives within the limit of the operation, if the connection is
/// lost
///   meanwhile, or if there is none. Without a connection a call waits at most 0.5 s for an attempt
///   that is under way; getCamerasInformation waits within its limit for the service to appear.
/// - STATUS_NOT_CONNECTED for an id that is not the connected device. An id is never 0.
/// - STATUS_PARAMETER for texts that do not fit into a message (1 MiB).
///
/// The limit is 10 s, if nothing else is said. Nothing throws.
///
/// The object connects to the service by itself, and again within 250 ms when a service that has
/// gone is back. It needs a QCoreApplication but not its event loop. Each object has a thread of
/// its own, which emits the signals; connect them queued. On that thread operations fail, and the
/// object must not be destroyed there. Its destructor ends running calls, which then fail, and
/// waits for them.
class KORVEX_PLATFORM_API SyncInterface : public QObject {
    Q_OBJECT

public:
    explicit SyncInterface(QObject* parent = nullptr);
    ~SyncInterface() override;

    /// Finds the cameras of a type ("KV00"): serial, image width and height (pixels), colour or
    /// not.
    Korvex3Sync::RETSTATUS getCamerasInformation(const QString& type, QStringList& names,
                                                 std::vector<int>& widths,
                                                 std::vector<int>& heights,
                                                 std::vector<bool>& isColor, int& count);
    Korvex3Sync::RETSTATUS getCameraCount(const QString& type, int& count);
    /// Connects the head to this client, which then owns it until it disconnects or ends. A client
    /// that owns it gets a new connection. STATUS_FAILED while another client owns it. Limit: 30 s.
    Korvex3Sync::RETSTATUS connectDevice(const QString& type, qint64& id);
    /// Limit: 30 s.
    Korvex3Sync::RETSTATUS disConnectDevice(qint64 id);
    /// Limit: 60 s.
    Korvex3Sync::RETSTATUS reconnectDevice(qint64 id);
    /// Limit: 30 s.
    Korvex3Sync::RETSTATUS closeDeviceCamera(qint64 id);
    Korvex3Sync::RETSTATUS getFirewareVersion(qint64 id, const QString& deviceType,
                                              const QString& projectorId, QString& version);
    Korvex3Sync::RETSTATUS getConnectCameraCount(qint64 id, int& count);
    Korvex3Sync::RETSTATUS getCameraSerialNumber(qint64 id, int camOrder, QString& serial);
    /// A camera that does not answer leaves the outputs as they are.
    Korvex3Sync::RETSTATUS getCameraResolution(qint64 id, int camOrder, int& width, int& height);
    /// `index` is the page (0 to 15). The text is the page's bytes as Latin-1, 256 at most.
    Korvex3Sync::RETSTATUS writeUserInfomation(qint64 id, int index, const QString& text);
    Korvex3Sync::RETSTATUS readUserInfomation(qint64 id, int index, QString& text);
    Korvex3Sync::RETSTATUS project(qint64 id, Korvex3Sync::PROJECTWORKTYPES type);
    Korvex3Sync::RETSTATUS setProjectorBrightness(qint64 id, int level);
    Korvex3Sync::RETSTATUS getProjectorBrightness(qint64 id, int& level);
    Korvex3Sync::RETSTATUS enableBlueLaser(qint64 id, Korvex3Sync::LASERWORKMODE mode, bool enable);
    Korvex3Sync::RETSTATUS enableIRLaser(qint64 id, bool enable);
    Korvex3Sync::RETSTATUS setStrobeControlledByTrigger(qint64 id, Korvex3Sync::CONTROLROUTE route,
                                                        Korvex3Sync::STROBE_STATE state);
    /// Ratios in percent.
    Korvex3Sync::RETSTATUS setStrobeDutioRatio(qint64 id, int texture, int ratio,
                                               int ratioWithTexture);
    Korvex3Sync::RETSTATUS getStrobeDutioRatio(qint64 id, int& texture, int& ratio,
                                               int& ratioWithTexture);
    Korvex3Sync::RETSTATUS setLaserLineDutioRatio(qint64 id, int ratio);
    Korvex3Sync::RETSTATUS getLaserLineDutioRatio(qint64 id, int& ratio);
    Korvex3Sync::RETSTATUS setProjectDutioRatio(qint64 id, int ratio);
    Korvex3Sync::RETSTATUS getProjectDutioRatio(qint64 id, int& ratio);
    Korvex3Sync::RETSTATUS setIRLaserDutioRatio(qint64 id, int ratio);
    Korvex3Sync::RETSTATUS getIRLaserDutioRatio(qint64 id, int& ratio);
    /// Milliseconds.
    Korvex3Sync::RETSTATUS setVideoTriggerPeriod(qint64 id, int period);
    Korvex3Sync::RETSTATUS getVideoTriggerPeriod(qint64 id, int& period);
    Korvex3Sync::RETSTATUS enableVideoTrigger(qint64 id, Korvex3Sync::CAMERA_TRIGGER_MODE mode,
                                              bool enable);
    Korvex3Sync::RETSTATUS setDistanceIndicate(qint64 id, Korvex3Sync::DISTANCESTATUS state);
    /// Exposure in milliseconds.
    Korvex3Sync::RETSTATUS setCameraExposureAndGain(qint64 id, int camOrder, double exposure,
                                                    int gain);
    /// A camera that does not answer gives the exposure 0 and leaves `gain` as it is.
    Korvex3Sync::RETSTATUS getCameraExposureAndGain(qint64 id, int camOrder, double& exposure,
                                                    int& gain);
    /// Starts or stops the status messages (sendMessage).
    Korvex3Sync::RETSTATUS setStatusCallBackFunction(qint64 id, bool start);
    /// Starts or stops the notices of image sets (sendCallback).
    Korvex3Sync::RETSTATUS setScanCallBackFunction(qint64 id, bool start);
    /// Takes two colour images. On success they are appended to `images`, each a `new[]` array that
    /// the caller frees with `delete[]`; the second may be null. `exposure` and `gain` are only
    /// read. Limit: 290 s.
    Korvex3Sync::RETSTATUS snapColorImage(qint64 id, std::vector<unsigned char*>& images,
                                          int& width, int& height, int camOrder, double& exposure,
                                          int& gain, Korvex3Sync::CONTROLROUTE route);

Q_SIGNALS:
    void sendMessage(QString pluginName, QString msgName, QList<QVariant> list, QString verion);
    void sendCallback(QString pluginName, QString callbackName, QList<QVariant> list,
                      QString verion);

private:
    const std::unique_ptr<Korvex3Sync::link::Client> m_client;
};
