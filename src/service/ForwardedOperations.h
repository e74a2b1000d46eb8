#pragma once

#include <array>
#include <tuple>

#include "platform/include/SyncInterface.h"
#include "service/CachedSettings.h"

namespace Korvex3Sync {

/// A setter: the call, the fields that remember its arguments, and its log texts. The texts are
/// fixed, with their inconsistent names and spaces.
template <class... Values>
struct Setting {
    RETSTATUS (SyncInterface::*call)(qint64, Values...);
    std::tuple<Values CachedSettings::*...> cached;
    std::array<const char*, sizeof...(Values)> before;
    const char* after;
};

template <class... Values>
Setting(RETSTATUS (SyncInterface::*)(qint64, Values...), std::tuple<Values CachedSettings::*...>,
        std::array<const char*, sizeof...(Values)>, const char*) -> Setting<Values...>;

/// A getter: the call, and the log texts for its status and its outputs.
template <class... Values>
struct Query {
    RETSTATUS (SyncInterface::*call)(qint64, Values&...);
    std::array<const char*, 1 + sizeof...(Values)> after;
};

template <class... Values>
Query(RETSTATUS (SyncInterface::*)(qint64, Values&...),
      std::array<const char*, 1 + sizeof...(Values)>) -> Query<Values...>;

/// A getter for one camera: its log text before the call is for the camera order.
template <class... Values>
struct CameraQuery {
    RETSTATUS (SyncInterface::*call)(qint64, int, Values&...);
    const char* before;
    std::array<const char*, 1 + sizeof...(Values)> after;
};

template <class... Values>
CameraQuery(RETSTATUS (SyncInterface::*)(qint64, int, Values&...), const char*,
            std::array<const char*, 1 + sizeof...(Values)>) -> CameraQuery<Values...>;

namespace forwarded {

using C = CachedSettings;
using S = SyncInterface;

inline const Setting kVideoTriggerPeriod{&S::setVideoTriggerPeriod, std::tuple{&C::m_triggerPeriod},
                                         std::array{"setVideoTriggerPeriod: triggerPeriod : "},
                                         "setVideoTriggerPeriod: ret: "};
inline const Setting kProjectorBrightness{
    &S::setProjectorBrightness, std::tuple{&C::m_brightnessLevel},
    std::array{"SetProjectorBrightness: brightnessLevel : "}, "SetProjectorBrightness: ret: "};
inline const Setting kVideoTrigger{
    &S::enableVideoTrigger, std::tuple{&C::m_cameraTriggerMode, &C::m_bEnable},
    std::array{"EnableVideoTrigger: cameraTriggerMode : ", " bEnable: "},
    "EnableVideoTrigger: ret: "};
inline const Setting kProject{&S::project, std::tuple{&C::m_projectType},
                              std::array{"Project: projectType : "}, "Project: ret: "};
inline const Setting kDistanceIndicate{&S::setDistanceIndicate, std::tuple{&C::m_disStauts},
                                       std::array{"SetDistanceIndicate: disStauts : "},
                                       "SetDistanceIndicate: ret: "};
inline const Setting kStrobeControlledByTrigger{
    &S::setStrobeControlledByTrigger, std::tuple{&C::m_controlRoute, &C::m_strobeState},
    std::array{"setStrobeControlledByTrigger: controlRoute : ", " strobeState: "},
    "setStrobeControlledByTrigger: ret: "};
inline const Setting kBlueLaser{
    &S::enableBlueLaser, std::tuple{&C::m_laserWorkMode, &C::m_bLaserEnable},
    std::array{"EnableBlueLaser: laserWorkMode : ", " bLaserEnable: "}, "enableBlueLaser = "};
// Logs under the name of the blue laser.
inline const Setting kIRLaser{&S::enableIRLaser, std::tuple{&C::m_bIRLaserEnable},
                              std::array{"EnableBlueLaser:  bLaserEnable: "}, "enableBlueLaser = "};
inline const Setting kStrobeDutioRatio{
    &S::setStrobeDutioRatio,
    std::tuple{&C::m_TexDutioRatio, &C::m_dutioRatio, &C::m_dutioRatioWithTex},
    std::array{"SetStrobeDutioRatio:  TexDutioRatio: ", " dutioRatio: ", " dutioRatioWithTex: "},
    "SetStrobeDutioRatio = "};
inline const Setting kLaserLineDutioRatio{
    &S::setLaserLineDutioRatio, std::tuple{&C::m_laserLineDutioRatio},
    std::array{"SetLaserLineDutioRatio:  dutioRatio: "}, "SetLaserLineDutioRatio = "};
inline const Setting kProjectDutioRatio{
    &S::setProjectDutioRatio, std::tuple{&C::m_projectDutioRatio},
    std::array{"SetProjectDutioRatio:  dutioRatio: "}, "SetProjectDutioRatio = "};
inline const Setting kIRLaserDutioRatio{
    &S::setIRLaserDutioRatio, std::tuple{&C::m_IRLaserDutioRatio},
    std::array{"SetIRLaserDutioRatio:  dutioRatio: "}, "SetIRLaserDutioRatio = "};

inline const Query kGetVideoTriggerPeriod{
    &S::getVideoTriggerPeriod,
    std::array{"GetVideoTriggerPeriod: ret: ", " currentTriggerPeriod : "}};
inline const Query kGetProjectorBrightness{
    &S::getProjectorBrightness,
    std::array{"GetProjectorBrightness: ret: ", " brightnessPercent : "}};
inline const Query kGetConnectCameraCount{
    &S::getConnectCameraCount, std::array{"GetConnectCameraCount: ret: ", " camCount : "}};
inline const Query kGetStrobeDutioRatio{&S::getStrobeDutioRatio,
                                        std::array{"GetStrobeDutioRatio = ", " TexDutioRatio: ",
                                                   " dutioRatio: ", " dutioRatioWithTex: "}};
inline const Query kGetLaserLineDutioRatio{&S::getLaserLineDutioRatio,
                                           std::array{"GetLaserLineDutioRatio = ", "dutioRatio: "}};
inline const Query kGetProjectDutioRatio{&S::getProjectDutioRatio,
                                         std::array{"GetProjectDutioRatio = ", "dutioRatio: "}};
inline const Query kGetIRLaserDutioRatio{&S::getIRLaserDutioRatio,
                                         std::array{"GetIRLaserDutioRatio = ", "dutioRatio: "}};
inline const Query<> kReconnectDevice{&S::reconnectDevice, {"ReconnectDevice: ret: "}};
inline const Query<> kCloseDeviceCamera{&S::closeDeviceCamera, {"CloseDeviceCamera = "}};

inline const CameraQuery kGetCameraResolution{
    &S::getCameraResolution, "GetCameraResolution: camOrder: ",
    std::array{"GetCameraResolution = ", " camWidth: ", " camHeight: "}};
inline const CameraQuery kGetCameraExposureAndGain{
    &S::getCameraExposureAndGain, "GetCameraExposureAndGain:  camOrder: ",
    std::array{"GetCameraExposureAndGain = ", " camExposureTime: ", " camGain: "}};

// The reconnect pushes what these two remember once for each camera.
inline constexpr std::array kExposureAndGainBefore{
    "SetCameraExposureAndGain:  camOrder: ", " camExposureTime: ", " camGain: "};
inline constexpr char kExposureAndGainAfter[] = "SetCameraExposureAndGain = ";
inline constexpr char kStatusCallBackAfter[] = "SetStatusCallBackFunction = ";
inline constexpr char kScanCallBackAfter[] = "SetScanCallBackFunction = ";

}  // namespace forwarded
}  // namespace Korvex3Sync
