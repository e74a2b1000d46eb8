#include "platform/include/SyncInterface.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <tuple>
#include <utility>

#include "platform/link/Client.h"
#include "platform/link/SnapshotImages.h"
#include "platform/link/channel/RunLogged.h"

using namespace Korvex3Sync;

namespace {

void EmitSignal(SyncInterface& owner, const link::Signal& signal) {
    const auto send = signal.kind == link::Signal::Kind::Message ? &SyncInterface::sendMessage
                                                                 : &SyncInterface::sendCallback;
    Q_EMIT(owner.*send)(signal.pluginName, signal.name, signal.list, signal.version);
}

template <class T>
void Assign(T& output, T& result) {
    output = std::move(result);
}

/// A missing result leaves the output as it is.
template <class T>
void Assign(T& output, const std::optional<T>& result) {
    output = result.value_or(output);
}

template <class... Outputs, class... Results>
void AssignAll(std::tuple<Outputs&...> outputs, std::tuple<Results...>& results) {
    std::apply(
        [&](auto&... output) {
            std::apply([&](auto&... result) { (Assign(output, result), ...); }, results);
        },
        outputs);
}

/// Calls an operation; `out` ties its outputs. No exception may cross the interface.
template <class Op, class... Results, class... Arguments>
RETSTATUS Call(link::Client& client, std::tuple<Results&...> out, const Arguments&... arguments) {
    RETSTATUS status = STATUS_FAILED;
    const bool ran = link::RunLogged(Op::kName, [&] {
        typename Op::Out results;
        status = client.Call<Op>({arguments...}, results);
        if (status == STATUS_SUCCESS) {
            AssignAll(out, results);
        }
    });
    return ran ? status : STATUS_FAILED;
}

/// The same for an operation without results.
template <class Op, class... Arguments>
RETSTATUS Order(link::Client& client, const Arguments&... arguments) {
    return Call<Op>(client, std::tie(), arguments...);
}

}  // namespace

SyncInterface::SyncInterface(QObject* parent)
    : QObject(parent),
      m_client(std::make_unique<link::Client>(
          link::Client::Target::Service,
          link::Client::Sinks{[this](const link::Signal& signal) { EmitSignal(*this, signal); },
                              {}})) {}

SyncInterface::~SyncInterface() = default;

RETSTATUS SyncInterface::getCamerasInformation(const QString& type, QStringList& names,
                                               std::vector<int>& widths, std::vector<int>& heights,
                                               std::vector<bool>& isColor, int& count) {
    return Call<link::GetCamerasInformation>(
        *m_client, std::tie(names, widths, heights, isColor, count), type);
}

RETSTATUS SyncInterface::getCameraCount(const QString& type, int& count) {
    return Call<link::GetCameraCount>(*m_client, std::tie(count), type);
}

RETSTATUS SyncInterface::connectDevice(const QString& type, qint64& id) {
    return Call<link::ConnectDevice>(*m_client, std::tie(id), type);
}

RETSTATUS SyncInterface::disConnectDevice(qint64 id) {
    return Order<link::DisConnectDevice>(*m_client, id);
}

RETSTATUS SyncInterface::reconnectDevice(qint64 id) {
    return Order<link::ReconnectDevice>(*m_client, id);
}

RETSTATUS SyncInterface::closeDeviceCamera(qint64 id) {
    return Order<link::CloseDeviceCamera>(*m_client, id);
}

RETSTATUS SyncInterface::getFirewareVersion(qint64 id, const QString& deviceType,
                                            const QString& projectorId, QString& version) {
    return Call<link::GetFirewareVersion>(*m_client, std::tie(version), id, deviceType,
                                          projectorId);
}

RETSTATUS SyncInterface::getConnectCameraCount(qint64 id, int& count) {
    return Call<link::GetConnectCameraCount>(*m_client, std::tie(count), id);
}

RETSTATUS SyncInterface::getCameraSerialNumber(qint64 id, int camOrder, QString& serial) {
    return Call<link::GetCameraSerialNumber>(*m_client, std::tie(serial), id, camOrder);
}

RETSTATUS SyncInterface::getCameraResolution(qint64 id, int camOrder, int& width, int& height) {
    return Call<link::GetCameraResolution>(*m_client, std::tie(width, height), id, camOrder);
}

RETSTATUS SyncInterface::writeUserInfomation(qint64 id, int index, const QString& text) {
    return Order<link::WriteUserInfomation>(*m_client, id, index, text);
}

RETSTATUS SyncInterface::readUserInfomation(qint64 id, int index, QString& text) {
    return Call<link::ReadUserInfomation>(*m_client, std::tie(text), id, index);
}

RETSTATUS SyncInterface::project(qint64 id, PROJECTWORKTYPES type) {
    return Order<link::Project>(*m_client, id, type);
}

RETSTATUS SyncInterface::setProjectorBrightness(qint64 id, int level) {
    return Order<link::SetProjectorBrightness>(*m_client, id, level);
}

RETSTATUS SyncInterface::getProjectorBrightness(qint64 id, int& level) {
    return Call<link::GetProjectorBrightness>(*m_client, std::tie(level), id);
}

RETSTATUS SyncInterface::enableBlueLaser(qint64 id, LASERWORKMODE mode, bool enable) {
    return Order<link::EnableBlueLaser>(*m_client, id, mode, enable);
}

RETSTATUS SyncInterface::enableIRLaser(qint64 id, bool enable) {
    return Order<link::EnableIRLaser>(*m_client, id, enable);
}

RETSTATUS SyncInterface::setStrobeControlledByTrigger(qint64 id, CONTROLROUTE route,
                                                      STROBE_STATE state) {
    return Order<link::SetStrobeControlledByTrigger>(*m_client, id, route, state);
}

RETSTATUS SyncInterface::setStrobeDutioRatio(qint64 id, int texture, int ratio,
                                             int ratioWithTexture) {
    return Order<link::SetStrobeDutioRatio>(*m_client, id, texture, ratio, ratioWithTexture);
}

RETSTATUS SyncInterface::getStrobeDutioRatio(qint64 id, int& texture, int& ratio,
                                             int& ratioWithTexture) {
    return Call<link::GetStrobeDutioRatio>(*m_client, std::tie(texture, ratio, ratioWithTexture),
                                           id);
}

RETSTATUS SyncInterface::setLaserLineDutioRatio(qint64 id, int ratio) {
    return Order<link::SetLaserLineDutioRatio>(*m_client, id, ratio);
}

RETSTATUS SyncInterface::getLaserLineDutioRatio(qint64 id, int& ratio) {
    return Call<link::GetLaserLineDutioRatio>(*m_client, std::tie(ratio), id);
}

RETSTATUS SyncInterface::setProjectDutioRatio(qint64 id, int ratio) {
    return Order<link::SetProjectDutioRatio>(*m_client, id, ratio);
}

RETSTATUS SyncInterface::getProjectDutioRatio(qint64 id, int& ratio) {
    return Call<link::GetProjectDutioRatio>(*m_client, std::tie(ratio), id);
}

RETSTATUS SyncInterface::setIRLaserDutioRatio(qint64 id, int ratio) {
    return Order<link::SetIRLaserDutioRatio>(*m_client, id, ratio);
}

RETSTATUS SyncInterface::getIRLaserDutioRatio(qint64 id, int& ratio) {
    return Call<link::GetIRLaserDutioRatio>(*m_client, std::tie(ratio), id);
}

RETSTATUS SyncInterface::setVideoTriggerPeriod(qint64 id, int period) {
    return Order<link::SetVideoTriggerPeriod>(*m_client, id, period);
}

RETSTATUS SyncInterface::getVideoTriggerPeriod(qint64 id, int& period) {
    return Call<link::GetVideoTriggerPeriod>(*m_client, std::tie(period), id);
}

RETSTATUS SyncInterface::enableVideoTrigger(qint64 id, CAMERA_TRIGGER_MODE mode, bool enable) {
    return Order<link::EnableVideoTrigger>(*m_client, id, mode, enable);
}

RETSTATUS SyncInterface::setDistanceIndicate(qint64 id, DISTANCESTATUS state) {
    return Order<link::SetDistanceIndicate>(*m_client, id, state);
}

RETSTATUS SyncInterface::setCameraExposureAndGain(qint64 id, int camOrder, double exposure,
                                                  int gain) {
    return Order<link::SetCameraExposureAndGain>(*m_client, id, camOrder, exposure, gain);
}

RETSTATUS SyncInterface::getCameraExposureAndGain(qint64 id, int camOrder, double& exposure,
                                                  int& gain) {
    return Call<link::GetCameraExposureAndGain>(*m_client, std::tie(exposure, gain), id, camOrder);
}

RETSTATUS SyncInterface::setStatusCallBackFunction(qint64 id, bool start) {
    return Order<link::SetStatusCallBackFunction>(*m_client, id, start);
}

RETSTATUS SyncInterface::setScanCallBackFunction(qint64 id, bool start) {
    return Order<link::SetScanCallBackFunction>(*m_client, id, start);
}

RETSTATUS SyncInterface::snapColorImage(qint64 id, std::vector<unsigned char*>& images, int& width,
                                        int& height, int camOrder, double& exposure, int& gain,
                                        CONTROLROUTE route) {
    QStringList segments;
    int snapWidth = 0;
    int snapHeight = 0;
    const RETSTATUS status = Call<link::SnapColorImage>(
        *m_client, std::tie(segments, snapWidth, snapHeight), id, camOrder, exposure, gain, route);
    if (status != STATUS_SUCCESS) {
        return status;
    }
    const auto pixels = static_cast<std::size_t>(std::max(snapWidth, 0)) *
                        static_cast<std::size_t>(std::max(snapHeight, 0));
    bool copied = false;
    link::RunLogged(link::SnapColorImage::kName,
                    [&] { copied = link::AppendSnapshotImages(segments, pixels, images); });
    if (!copied) {
        return STATUS_FAILED;
    }
    width = snapWidth;
    height = snapHeight;
    return status;
}
