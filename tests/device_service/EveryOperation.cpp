#include "device_service/EveryOperation.h"

#include <Korvex3Sync/Korvex3Sync.h>

#include <array>
#include <memory>
#include <sstream>

namespace Korvex3Sync::tests {
namespace {

using H = void* const&;
using Images = std::vector<unsigned char*>;

/// A value that no operation gives, to see which outputs are set.
constexpr int kUnset = -99;

template <class... Outputs>
std::string Result(RETSTATUS status, const Outputs&... outputs) {
    std::ostringstream text;
    text << static_cast<int>(status);
    ((text << ", " << outputs), ...);
    return text.str();
}

/// For a getter of one int, by both names.
Operation IntGetter(const char* name, RETSTATUS (SyncInterface::*service)(qint64, int&),
                    RETSTATUS (*direct)(void* const&, int&)) {
    return {name,
            [service](SyncInterface& s, qint64 id) {
                int value = kUnset;
                const RETSTATUS status = (s.*service)(id, value);
                return Result(status, value);
            },
            [direct](H h) {
                int value = kUnset;
                const RETSTATUS status = direct(h, value);
                return Result(status, value);
            }};
}

/// For a setter of one value.
template <class Value>
Operation Setter(const char* name, RETSTATUS (SyncInterface::*service)(qint64, Value),
                 RETSTATUS (*direct)(void* const&, const Value&), Value value) {
    return {name, [=](SyncInterface& s, qint64 id) { return Result((s.*service)(id, value)); },
            [=](H h) { return Result(direct(h, value)); }};
}

Operation StrobeGetter() {
    return {"getStrobeDutioRatio",
            [](SyncInterface& s, qint64 id) {
                int a = kUnset;
                int b = kUnset;
                int c = kUnset;
                const RETSTATUS status = s.getStrobeDutioRatio(id, a, b, c);
                return Result(status, a, b, c);
            },
            [](H h) {
                int a = kUnset;
                int b = kUnset;
                int c = kUnset;
                const RETSTATUS status = GetStrobeDutioRatio(h, a, b, c);
                return Result(status, a, b, c);
            }};
}

Operation ExposureSetter(int order, double exposure, int gain) {
    return {"setCameraExposureAndGain",
            [=](SyncInterface& s, qint64 id) {
                return Result(s.setCameraExposureAndGain(id, order, exposure, gain));
            },
            [=](H h) { return Result(SetCameraExposureAndGain(h, order, exposure, gain)); }};
}

Operation ExposureGetter(int order) {
    return {"getCameraExposureAndGain",
            [order](SyncInterface& s, qint64 id) {
                double exposure = kUnset;
                int gain = kUnset;
                const RETSTATUS status = s.getCameraExposureAndGain(id, order, exposure, gain);
                return Result(status, exposure, gain);
            },
            [order](H h) {
                double exposure = kUnset;
                int gain = kUnset;
                const RETSTATUS status = GetCameraExposureAndGain(h, order, exposure, gain);
                return Result(status, exposure, gain);
            }};
}

Operation Firmware() {
    return {"getFirewareVersion",
            [](SyncInterface& s, qint64 id) {
                QString version("unset");
                const RETSTATUS status = s.getFirewareVersion(id, "KV00", "", version);
                return Result(status, version.toStdString());
            },
            [](H h) {
                std::string version = "unset";
                const RETSTATUS status = GetFirewareVersion(h, "KV00", "", version);
                return Result(status, version);
            }};
}

Operation Serial(int index) {
    return {"getCameraSerialNumber",
            [index](SyncInterface& s, qint64 id) {
                QString serial("unset");
                const RETSTATUS status = s.getCameraSerialNumber(id, index, serial);
                return Result(status, serial.toStdString());
            },
            [index](H h) {
                char* serial = nullptr;
                const RETSTATUS status = GetCameraSerialNumber(h, index, serial);
                const std::unique_ptr<char[]> owned(serial);
                return Result(status, owned ? owned.get() : "unset");
            }};
}

Operation Resolution(int index) {
    return {"getCameraResolution",
            [index](SyncInterface& s, qint64 id) {
                int width = kUnset;
                int height = kUnset;
                const RETSTATUS status = s.getCameraResolution(id, index, width, height);
                return Result(status, width, height);
            },
            [index](H h) {
                int width = kUnset;
                int height = kUnset;
                const RETSTATUS status = GetCameraResolution(h, index, width, height);
                return Result(status, width, height);
            }};
}

/// Text with a byte above 127, which one character stands for on the way.
Operation UserMemoryWriter(int page, const std::string& text) {
    return {
        "writeUserInfomation",
        [=](SyncInterface& s, qint64 id) {
            return Result(s.writeUserInfomation(
                id, page, QString::fromLatin1(text.data(), static_cast<int>(text.size()))));
        },
        [=](H h) {
            return Result(WriteUserInfomation(h, page, text.data(), static_cast<int>(text.size())));
        }};
}

Operation UserMemoryReader(int page) {
    return {"readUserInfomation",
            [page](SyncInterface& s, qint64 id) {
                QString text("unset");
                const RETSTATUS status = s.readUserInfomation(id, page, text);
                return Result(status, text.toLatin1().toStdString());
            },
            [page](H h) {
                std::array<char, 256> buffer{};
                char* data = buffer.data();
                const RETSTATUS status = ReadUserInfomation(h, page, data);
                return Result(status, status == STATUS_SUCCESS
                                          ? std::string(buffer.data(), buffer.size())
                                          : "unset");
            }};
}

/// The pixels as one number, or what is missing.
std::string Pixels(const Images& images) {
    std::ostringstream text;
    for (unsigned char* image : images) {
        const std::unique_ptr<unsigned char[]> owned(image);
        text << (owned ? std::hash<std::string_view>()(
                             {reinterpret_cast<const char*>(image), std::size_t{1280} * 1024})
                       : 0)
             << ' ';
    }
    return text.str();
}

Operation Snapshot(CONTROLROUTE route) {
    return {"snapColorImage",
            [route](SyncInterface& s, qint64 id) {
                Images images;
                int width = kUnset;
                int height = kUnset;
                double exposure = 7.5;
                int gain = 3;
                const RETSTATUS status =
                    s.snapColorImage(id, images, width, height, 0, exposure, gain, route);
                return Result(status, width, height, exposure, gain, Pixels(images));
            },
            [route](H h) {
                Images images;
                int width = kUnset;
                int height = kUnset;
                double exposure = 7.5;
                int gain = 3;
                const RETSTATUS status =
                    SnapColorImage(h, images, width, height, 0, exposure, gain, route);
                return Result(status, width, height, exposure, gain, Pixels(images));
            }};
}

void IgnoreSet(const void* const&, std::vector<unsigned char*>&, const int&, const int&,
               std::vector<int>&) {}
void IgnoreStatus(const void* const&, const unsigned char&, const unsigned char&) {}

Operation ScanCallback(bool start) {
    return {"setScanCallBackFunction",
            [start](SyncInterface& s, qint64 id) {
                return Result(s.setScanCallBackFunction(id, start));
            },
            [start](H h) {
                static int context = 0;
                return Result(SetScanCallBackFunction(h, start ? IgnoreSet : nullptr,
                                                      start ? &context : nullptr));
            }};
}

Operation StatusCallback(bool start) {
    return {"setStatusCallBackFunction",
            [start](SyncInterface& s, qint64 id) {
                return Result(s.setStatusCallBackFunction(id, start));
            },
            [start](H h) {
                static int context = 0;
                return Result(SetStatusCallBackFunction(h, start ? IgnoreStatus : nullptr,
                                                        start ? &context : nullptr));
            }};
}

Operation Trigger(CAMERA_TRIGGER_MODE mode, bool enable) {
    return {
        "enableVideoTrigger",
        [=](SyncInterface& s, qint64 id) { return Result(s.enableVideoTrigger(id, mode, enable)); },
        [=](H h) { return Result(EnableVideoTrigger(h, mode, enable)); }};
}

Operation Strobe(CONTROLROUTE route, STROBE_STATE state) {
    return {"setStrobeControlledByTrigger",
            [=](SyncInterface& s, qint64 id) {
                return Result(s.setStrobeControlledByTrigger(id, route, state));
            },
            [=](H h) { return Result(SetStrobeControlledByTrigger(h, route, state)); }};
}

Operation StrobeRatios(int texture, int ratio, int ratioWithTexture) {
    return {"setStrobeDutioRatio",
            [=](SyncInterface& s, qint64 id) {
                return Result(s.setStrobeDutioRatio(id, texture, ratio, ratioWithTexture));
            },
            [=](H h) { return Result(SetStrobeDutioRatio(h, texture, ratio, ratioWithTexture)); }};
}

Operation BlueLaser(LASERWORKMODE mode, bool enable) {
    return {
        "enableBlueLaser",
        [=](SyncInterface& s, qint64 id) { return Result(s.enableBlueLaser(id, mode, enable)); },
        [=](H h) { return Result(EnableBlueLaser(h, mode, enable)); }};
}

Operation OfDevice(const char* name, RETSTATUS (SyncInterface::*service)(qint64),
                   RETSTATUS (*direct)(void* const&)) {
    return {name, [=](SyncInterface& s, qint64 id) { return Result((s.*service)(id)); },
            [=](H h) { return Result(direct(h)); }};
}

}  // namespace

const std::vector<Operation>& EveryOperation() {
    using S = SyncInterface;
    static const std::vector<Operation> operations{
        Firmware(),
        IntGetter("getConnectCameraCount", &S::getConnectCameraCount, GetConnectCameraCount),
        Serial(0),
        Serial(1),
        Serial(2),
        Serial(-1),
        Resolution(0),
        Resolution(7),
        UserMemoryWriter(2, "bench 7 \xFF\x80"),
        UserMemoryReader(2),
        UserMemoryWriter(2, std::string("a\0b", 3)),
        UserMemoryReader(2),
        UserMemoryWriter(3, std::string(256, 'x')),
        UserMemoryReader(3),
        UserMemoryWriter(3, std::string(257, 'y')),
        UserMemoryWriter(16, "z"),
        UserMemoryReader(16),
        Setter("project", &S::project, Project, PROJECT_PATTERN_2),
        Setter("project", &S::project, Project, static_cast<PROJECTWORKTYPES>(9)),
        Setter("setProjectorBrightness", &S::setProjectorBrightness, SetProjectorBrightness, 41),
        IntGetter("getProjectorBrightness", &S::getProjectorBrightness, GetProjectorBrightness),
        Setter("setProjectorBrightness", &S::setProjectorBrightness, SetProjectorBrightness, -7),
        IntGetter("getProjectorBrightness", &S::getProjectorBrightness, GetProjectorBrightness),
        BlueLaser(LASER_WORK_MODE_2, true),
        BlueLaser(LASER_WORK_MODE_1, false),
        Setter("enableIRLaser", &S::enableIRLaser, EnableIRLaser, true),
        Setter("enableIRLaser", &S::enableIRLaser, EnableIRLaser, false),
        Strobe(CONTROL_ROUTE_1, STROBE_STATE_3),
        Strobe(static_cast<CONTROLROUTE>(3), STROBE_STATE_3),
        Strobe(CONTROL_ROUTE_0, static_cast<STROBE_STATE>(5)),
        StrobeRatios(11, 22, 33),
        StrobeGetter(),
        StrobeRatios(-1, 44, -1),
        StrobeGetter(),
        Setter("setLaserLineDutioRatio", &S::setLaserLineDutioRatio, SetLaserLineDutioRatio, 51),
        IntGetter("getLaserLineDutioRatio", &S::getLaserLineDutioRatio, GetLaserLineDutioRatio),
        Setter("setProjectDutioRatio", &S::setProjectDutioRatio, SetProjectDutioRatio, 52),
        IntGetter("getProjectDutioRatio", &S::getProjectDutioRatio, GetProjectDutioRatio),
        Setter("setIRLaserDutioRatio", &S::setIRLaserDutioRatio, SetIRLaserDutioRatio, 53),
        IntGetter("getIRLaserDutioRatio", &S::getIRLaserDutioRatio, GetIRLaserDutioRatio),
        Setter("setVideoTriggerPeriod", &S::setVideoTriggerPeriod, SetVideoTriggerPeriod, 20),
        IntGetter("getVideoTriggerPeriod", &S::getVideoTriggerPeriod, GetVideoTriggerPeriod),
        Setter("setDistanceIndicate", &S::setDistanceIndicate, SetDistanceIndicate,
               DISTANCE_STATUS_2),
        Setter("setDistanceIndicate", &S::setDistanceIndicate, SetDistanceIndicate,
               static_cast<DISTANCESTATUS>(7)),
        ExposureSetter(1, 8.5, 3),
        ExposureGetter(1),
        ExposureGetter(0),
        ExposureSetter(0, 30, 99),
        ExposureGetter(0),
        ExposureGetter(3),
        Snapshot(CONTROL_ROUTE_1),
        Snapshot(static_cast<CONTROLROUTE>(5)),
        ScanCallback(true),
        StatusCallback(true),
        Trigger(TRIGGER_LASER_LINES_COLOR, true),
        Trigger(static_cast<CAMERA_TRIGGER_MODE>(9), true),
        Trigger(TRIGGER_PATTERN, false),
        StatusCallback(false),
        ScanCallback(false),
        OfDevice("closeDeviceCamera", &S::closeDeviceCamera, CloseDeviceCamera),
        ExposureGetter(1),
        OfDevice("reconnectDevice", &S::reconnectDevice,
                 static_cast<RETSTATUS (*)(void* const&)>(ReconnectDevice)),
        ExposureGetter(1),
        IntGetter("getVideoTriggerPeriod", &S::getVideoTriggerPeriod, GetVideoTriggerPeriod),
    };
    return operations;
}

}  // namespace Korvex3Sync::tests
