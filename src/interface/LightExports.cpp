#include "Korvex3Sync/Light.h"

#include "interface/CallFrame.h"

namespace Korvex3Sync {

RETSTATUS Project(void* const& handle, const PROJECTWORKTYPES& type) {
    return ExportCall(Standard{&BoardSession::Project, &zr3DHandiSyncQT::Project}, "Project",
                      handle, type);
}

RETSTATUS SetProjectorBrightness(void* const& handle, const int& brightness) {
    return ExportCall(
        Standard{&BoardSession::SetProjectorBrightness, &zr3DHandiSyncQT::SetProjectorBrightness},
        "SetProjectorBrightness", handle, brightness);
}

RETSTATUS GetProjectorBrightness(void* const& handle, int& brightness) {
    return ExportCall(
        Standard{&BoardSession::GetProjectorBrightness, &zr3DHandiSyncQT::GetProjectorBrightness},
        "GetProjectorBrightness", handle, brightness);
}

RETSTATUS EnableBlueLaser(void* const& handle, const LASERWORKMODE& mode, const bool& enable) {
    return ExportCall(Standard{&BoardSession::EnableBlueLaser, &zr3DHandiSyncQT::EnableBlueLaser},
                      "EnableBlueLaser", handle, mode, enable);
}

RETSTATUS EnableIRLaser(void* const& handle, const bool& enable) {
    return ExportCall(Standard{&BoardSession::EnableIRLaser, &zr3DHandiSyncQT::EnableIRLaser},
                      "EnableIRLaser", handle, enable);
}

RETSTATUS SetIRLaserBrightnessLevel(void* const& handle, const int& level) {
    return ExportCall(DirectOnly{&BoardSession::SetIRLaserBrightnessLevel},
                      "SetIRLaserBrightnessLevel", handle, level);
}

RETSTATUS SetStrobeControlledByTrigger(void* const& handle, const CONTROLROUTE& route,
                                       const STROBE_STATE& state) {
    return ExportCall(Standard{&BoardSession::SetStrobeControlledByTrigger,
                               &zr3DHandiSyncQT::SetStrobeControlledByTrigger},
                      "SetStrobeControlledByTrigger", handle, route, state);
}

RETSTATUS SetStrobeDutioRatio(void* const& handle, const int& textureRatio, const int& ratio,
                              const int& ratioWithTexture) {
    return ExportCall(
        Standard{&BoardSession::SetStrobeDutioRatio, &zr3DHandiSyncQT::SetStrobeDutioRatio},
        "SetStrobeDutioRatio", handle, textureRatio, ratio, ratioWithTexture);
}

RETSTATUS GetStrobeDutioRatio(void* const& handle, int& textureRatio, int& ratio,
                              int& ratioWithTexture) {
    return ExportCall(
        Standard{&BoardSession::GetStrobeDutioRatio, &zr3DHandiSyncQT::GetStrobeDutioRatio},
        "GetStrobeDutioRatio", handle, textureRatio, ratio, ratioWithTexture);
}

RETSTATUS SetLaserLineDutioRatio(void* const& handle, const int& ratio) {
    return ExportCall(
        Standard{&BoardSession::SetLaserLineDutioRatio, &zr3DHandiSyncQT::SetLaserLineDutioRatio},
        "SetLaserLineDutioRatio", handle, ratio);
}

RETSTATUS GetLaserLineDutioRatio(void* const& handle, int& ratio) {
    return ExportCall(
        Standard{&BoardSession::GetLaserLineDutioRatio, &zr3DHandiSyncQT::GetLaserLineDutioRatio},
        "GetLaserLineDutioRatio", handle, ratio);
}

RETSTATUS SetProjectDutioRatio(void* const& handle, const int& ratio) {
    return ExportCall(
        Standard{&BoardSession::SetProjectDutioRatio, &zr3DHandiSyncQT::SetProjectDutioRatio},
        "SetProjectDutioRatio", handle, ratio);
}

RETSTATUS GetProjectDutioRatio(void* const& handle, int& ratio) {
    return ExportCall(
        Standard{&BoardSession::GetProjectDutioRatio, &zr3DHandiSyncQT::GetProjectDutioRatio},
        "GetProjectDutioRatio", handle, ratio);
}

RETSTATUS SetIRLaserDutioRatio(void* const& handle, const int& ratio) {
    return ExportCall(
        Standard{&BoardSession::SetIRLaserDutioRatio, &zr3DHandiSyncQT::SetIRLaserDutioRatio},
        "SetIRLaserDutioRatio", handle, ratio);
}

RETSTATUS GetIRLaserDutioRatio(void* const& handle, int& ratio) {
    return ExportCall(
        Standard{&BoardSession::GetIRLaserDutioRatio, &zr3DHandiSyncQT::GetIRLaserDutioRatio},
        "GetIRLaserDutioRatio", handle, ratio);
}

RETSTATUS SetStrobeWorkTime(void* const& handle, const int& timeWithTexture, const int& time) {
    return ExportCall(DirectOnly{&BoardSession::SetStrobeWorkTime}, "SetStrobeWorkTime", handle,
                      timeWithTexture, time);
}

RETSTATUS GetStrobeWorkTime(void* const& handle, int& timeWithTexture, int& time) {
    return ExportCall(DirectOnly{&BoardSession::GetStrobeWorkTime}, "GetStrobeWorkTime", handle,
                      timeWithTexture, time);
}

RETSTATUS SetLaserLineWorkTime(void* const& handle, const int& time) {
    return ExportCall(DirectOnly{&BoardSession::SetLaserLineWorkTime}, "SetLaserLineWorkTime",
                      handle, time);
}

RETSTATUS GetLaserLineWorkTime(void* const& handle, int& time) {
    return ExportCall(DirectOnly{&BoardSession::GetLaserLineWorkTime}, "GetLaserLineWorkTime",
                      handle, time);
}

RETSTATUS SetProjectWorkTime(void* const& handle, const int& time) {
    return ExportCall(DirectOnly{&BoardSession::SetProjectWorkTime}, "SetProjectWorkTime", handle,
                      time);
}

RETSTATUS GetProjectWorkTime(void* const& handle, int& time) {
    return ExportCall(DirectOnly{&BoardSession::GetProjectWorkTime}, "GetProjectWorkTime", handle,
                      time);
}

RETSTATUS SetIRLaserWorkTime(void* const& handle, const int& time) {
    return ExportCall(DirectOnly{&BoardSession::SetIRLaserWorkTime}, "SetIRLaserWorkTime", handle,
                      time);
}

RETSTATUS GetIRLaserWorkTime(void* const& handle, int& time) {
    return ExportCall(DirectOnly{&BoardSession::GetIRLaserWorkTime}, "GetIRLaserWorkTime", handle,
                      time);
}

RETSTATUS SetVideoTriggerPeriod(void* const& handle, const int& period) {
    return ExportCall(
        Standard{&BoardSession::SetVideoTriggerPeriod, &zr3DHandiSyncQT::SetVideoTriggerPeriod},
        "SetVideoTriggerPeriod", handle, period);
}

RETSTATUS GetVideoTriggerPeriod(void* const& handle, int& period) {
    return ExportCall(
        Standard{&BoardSession::GetVideoTriggerPeriod, &zr3DHandiSyncQT::GetVideoTriggerPeriod},
        "GetVideoTriggerPeriod", handle, period);
}

RETSTATUS EnableVideoTrigger(void* const& handle, const CAMERA_TRIGGER_MODE& mode,
                             const bool& enable) {
    return ExportCall(
        Standard{&BoardSession::EnableVideoTrigger, &zr3DHandiSyncQT::EnableVideoTrigger},
        "EnableVideoTrigger", handle, mode, enable);
}

RETSTATUS SetDistanceIndicate(void* const& handle, const DISTANCESTATUS& state) {
    const auto set = [](IManagerSync& manager, const DISTANCESTATUS& asked) {
        const RETSTATUS status = manager.Board().SetDistanceIndicate(asked);
        KORVEX_LOG(kInterfaceLog) << "SetDistanceIndicate leave";
        return status;
    };
    return ExportCall(Standard{set, &zr3DHandiSyncQT::SetDistanceIndicate}, "SetDistanceIndicate",
                      handle, state);
}

}  // namespace Korvex3Sync
