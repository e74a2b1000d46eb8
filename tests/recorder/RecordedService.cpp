#include "recorder/RecordedService.h"

#include <atomic>
#include <mutex>

#include "recorder/Recorder.h"

namespace Korvex3Sync::link {

/// The real one is hidden behind the header of SyncInterface.
class Client {};

}  // namespace Korvex3Sync::link

namespace Korvex3Sync::tests::recorder {
namespace {

std::atomic<SyncInterface*> g_syncInterface{nullptr};
std::mutex g_textMutex;

QString& Text() {
    static QString text;
    return text;
}

QString ServiceText() {
    std::lock_guard lock(g_textMutex);
    return Text();
}

int ServiceValue(const char* name) {
    return Recorder::Get().Value(name);
}

template <class... Args>
RETSTATUS Answer(const std::string& name, const Args&... args) {
    if (!Recorder::Get().Record(name, args...)) {
        return STATUS_FAILED;
    }
    const int ordered = Recorder::Get().Value(name);
    return ordered == 0 ? STATUS_SUCCESS : static_cast<RETSTATUS>(ordered);
}

/// Sets an output if the call succeeded.
RETSTATUS With(RETSTATUS status, int& output, const char* name) {
    if (status == STATUS_SUCCESS) {
        output = ServiceValue(name);
    }
    return status;
}

RETSTATUS WithText(RETSTATUS status, QString& output) {
    if (status == STATUS_SUCCESS) {
        output = ServiceText();
    }
    return status;
}

}  // namespace

SyncInterface* TheSyncInterface() {
    return g_syncInterface;
}

void SetServiceText(const QString& text) {
    std::lock_guard lock(g_textMutex);
    Text() = text;
}

}  // namespace Korvex3Sync::tests::recorder

using Korvex3Sync::RETSTATUS;
using Korvex3Sync::STATUS_SUCCESS;
using namespace Korvex3Sync::tests::recorder;

SyncInterface::SyncInterface(QObject* parent) : QObject(parent) {
    Recorder::Get().Record("SyncInterface");
    g_syncInterface = this;
}

SyncInterface::~SyncInterface() {
    SyncInterface* self = this;
    g_syncInterface.compare_exchange_strong(self, nullptr);
}

RETSTATUS SyncInterface::getCamerasInformation(const QString& type, QStringList& names,
                                               std::vector<int>& widths, std::vector<int>& heights,
                                               std::vector<bool>& isColor, int& count) {
    const RETSTATUS status = Answer("getCamerasInformation", type.toStdString());
    if (status == STATUS_SUCCESS) {
        count = ServiceValue("count");
        for (int i = 0; i < count; ++i) {
            names.append(ServiceText());
            widths.push_back(ServiceValue("width"));
            heights.push_back(ServiceValue("height"));
            isColor.push_back(true);
        }
    }
    return status;
}

RETSTATUS SyncInterface::getCameraCount(const QString& type, int& count) {
    return With(Answer("getCameraCount", type.toStdString()), count, "count");
}

RETSTATUS SyncInterface::connectDevice(const QString& type, qint64& id) {
    const RETSTATUS status = Answer("connectDevice", type.toStdString());
    if (status == STATUS_SUCCESS) {
        id = ServiceValue("id");
    }
    return status;
}

RETSTATUS SyncInterface::disConnectDevice(qint64 id) {
    return Answer("disConnectDevice", id);
}

RETSTATUS SyncInterface::reconnectDevice(qint64 id) {
    return Answer("reconnectDevice", id);
}

RETSTATUS SyncInterface::closeDeviceCamera(qint64 id) {
    return Answer("closeDeviceCamera", id);
}

RETSTATUS SyncInterface::getFirewareVersion(qint64 id, const QString& deviceType,
                                            const QString& projectorId, QString& version) {
    return WithText(
        Answer("getFirewareVersion", id, deviceType.toStdString(), projectorId.toStdString()),
        version);
}

RETSTATUS SyncInterface::getConnectCameraCount(qint64 id, int& count) {
    return With(Answer("getConnectCameraCount", id), count, "count");
}

RETSTATUS SyncInterface::getCameraSerialNumber(qint64 id, int camOrder, QString& serial) {
    return WithText(Answer("getCameraSerialNumber", id, camOrder), serial);
}

RETSTATUS SyncInterface::getCameraResolution(qint64 id, int camOrder, int& width, int& height) {
    const RETSTATUS status = Answer("getCameraResolution", id, camOrder);
    With(status, width, "width");
    return With(status, height, "height");
}

RETSTATUS SyncInterface::writeUserInfomation(qint64 id, int index, const QString& text) {
    return Answer("writeUserInfomation", id, index, text.toLatin1().toStdString());
}

RETSTATUS SyncInterface::readUserInfomation(qint64 id, int index, QString& text) {
    return WithText(Answer("readUserInfomation", id, index), text);
}

RETSTATUS SyncInterface::project(qint64 id, Korvex3Sync::PROJECTWORKTYPES type) {
    return Answer("project", id, type);
}

RETSTATUS SyncInterface::setProjectorBrightness(qint64 id, int level) {
    return Answer("setProjectorBrightness", id, level);
}

RETSTATUS SyncInterface::getProjectorBrightness(qint64 id, int& level) {
    return With(Answer("getProjectorBrightness", id), level, "brightness");
}

RETSTATUS SyncInterface::enableBlueLaser(qint64 id, Korvex3Sync::LASERWORKMODE mode, bool enable) {
    return Answer("enableBlueLaser", id, mode, enable);
}

RETSTATUS SyncInterface::enableIRLaser(qint64 id, bool enable) {
    return Answer("enableIRLaser", id, enable);
}

RETSTATUS SyncInterface::setStrobeControlledByTrigger(qint64 id, Korvex3Sync::CONTROLROUTE route,
                                                      Korvex3Sync::STROBE_STATE state) {
    return Answer("setStrobeControlledByTrigger", id, route, state);
}

RETSTATUS SyncInterface::setStrobeDutioRatio(qint64 id, int texture, int ratio,
                                             int ratioWithTexture) {
    return Answer("setStrobeDutioRatio", id, texture, ratio, ratioWithTexture);
}

RETSTATUS SyncInterface::getStrobeDutioRatio(qint64 id, int& texture, int& ratio,
                                             int& ratioWithTexture) {
    const RETSTATUS status = Answer("getStrobeDutioRatio", id);
    With(status, texture, "texture");
    With(status, ratio, "ratio");
    return With(status, ratioWithTexture, "ratioWithTexture");
}

RETSTATUS SyncInterface::setLaserLineDutioRatio(qint64 id, int ratio) {
    return Answer("setLaserLineDutioRatio", id, ratio);
}

RETSTATUS SyncInterface::getLaserLineDutioRatio(qint64 id, int& ratio) {
    return With(Answer("getLaserLineDutioRatio", id), ratio, "ratio");
}

RETSTATUS SyncInterface::setProjectDutioRatio(qint64 id, int ratio) {
    return Answer("setProjectDutioRatio", id, ratio);
}

RETSTATUS SyncInterface::getProjectDutioRatio(qint64 id, int& ratio) {
    return With(Answer("getProjectDutioRatio", id), ratio, "ratio");
}

RETSTATUS SyncInterface::setIRLaserDutioRatio(qint64 id, int ratio) {
    return Answer("setIRLaserDutioRatio", id, ratio);
}

RETSTATUS SyncInterface::getIRLaserDutioRatio(qint64 id, int& ratio) {
    return With(Answer("getIRLaserDutioRatio", id), ratio, "ratio");
}

RETSTATUS SyncInterface::setVideoTriggerPeriod(qint64 id, int period) {
    return Answer("setVideoTriggerPeriod", id, period);
}

RETSTATUS SyncInterface::getVideoTriggerPeriod(qint64 id, int& period) {
    return With(Answer("getVideoTriggerPeriod", id), period, "period");
}

RETSTATUS SyncInterface::enableVideoTrigger(qint64 id, Korvex3Sync::CAMERA_TRIGGER_MODE mode,
                                            bool enable) {
    return Answer("enableVideoTrigger", id, mode, enable);
}

RETSTATUS SyncInterface::setDistanceIndicate(qint64 id, Korvex3Sync::DISTANCESTATUS state) {
    return Answer("setDistanceIndicate", id, state);
}

RETSTATUS SyncInterface::setCameraExposureAndGain(qint64 id, int camOrder, double exposure,
                                                  int gain) {
    return Answer("setCameraExposureAndGain", id, camOrder, exposure, gain);
}

RETSTATUS SyncInterface::getCameraExposureAndGain(qint64 id, int camOrder, double& exposure,
                                                  int& gain) {
    const RETSTATUS status = Answer("getCameraExposureAndGain", id, camOrder);
    if (status == STATUS_SUCCESS) {
        exposure = ServiceValue("exposure") + 0.5;
    }
    return With(status, gain, "gain");
}

RETSTATUS SyncInterface::setStatusCallBackFunction(qint64 id, bool start) {
    return Answer("setStatusCallBackFunction", id, start);
}

RETSTATUS SyncInterface::setScanCallBackFunction(qint64 id, bool start) {
    return Answer("setScanCallBackFunction", id, start);
}

RETSTATUS SyncInterface::snapColorImage(qint64 id, std::vector<unsigned char*>& images, int& width,
                                        int& height, int camOrder, double& exposure, int& gain,
                                        Korvex3Sync::CONTROLROUTE route) {
    const RETSTATUS status = Answer("snapColorImage", id, camOrder, exposure, gain, route);
    if (status == STATUS_SUCCESS) {
        images.push_back(new unsigned char[1]{42});
        With(status, width, "width");
        With(status, height, "height");
    }
    return status;
}
