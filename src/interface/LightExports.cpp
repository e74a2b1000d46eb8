#include "Korvex3Sync/Light.h"

#include "interface/CallFrame.h"

namespace Korvex3Sync {

RETSTATUS Project(void* const& handle, const PROJECTWORKTYPES& type) {
    return ExportCall(Variant::Standard, "Project", handle, &IManagerSync::Project, type);
}

RETSTATUS SetProjectorBrightness(void* const& handle, const int& brightness) {
    return ExportCall(Variant::Standard, "SetProjectorBrightness", handle,
                      &IManagerSync::SetProjectorBrightness, brightness);
}

RETSTATUS GetProjectorBrightness(void* const& handle, int& brightness) {
    return ExportCall(Variant::Standard, "GetProjectorBrightness", handle,
                      &IManagerSync::GetProjectorBrightness, brightness);
}

RETSTATUS EnableBlueLaser(void* const& handle, const LASERWORKMODE& mode, const bool& enable) {
    return ExportCall(Variant::Standard, "EnableBlueLaser", handle, &IManagerSync::EnableBlueLaser,
                      mode, enable);
}

RETSTATUS EnableIRLaser(void* const& handle, const bool& enable) {
    return ExportCall(Variant::Standard, "EnableIRLaser", handle, &IManagerSync::EnableIRLaser,
                      enable);
}

RETSTATUS SetIRLaserBrightnessLevel(void* const& handle, const int& level) {
    return ExportCall(Variant::DirectOnly, "SetIRLaserBrightnessLevel", handle,
                      &IManagerSync::SetIRLaserBrightnessLevel, level);
}

RETSTATUS SetStrobeControlledByTrigger(void* const& handle, const CONTROLROUTE& route,
                                       const STROBE_STATE& state) {
    return ExportCall(Variant::Standard, "SetStrobeControlledByTrigger", handle,
                      &IManagerSync::SetStrobeControlledByTrigger, route, state);
}

RETSTATUS SetStrobeDutioRatio(void* const& handle, const int& textureRatio, const int& ratio,
                              const int& ratioWithTexture) {
    return ExportCall(Variant::Standard, "SetStrobeDutioRatio", handle,
                      &IManagerSync::SetStrobeDutioRatio, textureRatio, ratio, ratioWithTexture);
}

RETSTATUS GetStrobeDutioRatio(void* const& handle, int& textureRatio, int& ratio,
                              int& ratioWithTexture) {
    return ExportCall(Variant::Standard, "GetStrobeDutioRatio", handle,
                      &IManagerSync::GetStrobeDutioRatio, textureRatio, ratio, ratioWithTexture);
}

RETSTATUS SetLaserLineDutioRatio(void* const& handle, const int& ratio) {
    return ExportCall(Variant::Standard, "SetLaserLineDutioRatio", handle,
                      &IManagerSync::SetLaserLineDutioRatio, ratio);
}

RETSTATUS GetLaserLineDutioRatio(void* const& handle, int& ratio) {
    return ExportCall(Variant::Standard, "GetLaserLineDutioRatio", handle,
                      &IManagerSync::GetLaserLineDutioRatio, ratio);
}

RETSTATUS SetProjectDutioRatio(void* const& handle, const int& ratio) {
    return ExportCall(Variant::Standard, "SetProjectDutioRatio", handle,
                      &IManagerSync::SetProjectDutioRatio, ratio);
}

RETSTATUS GetProjectDutioRatio(void* const& handle, int& ratio) {
    return ExportCall(Variant::Standard, "GetProjectDutioRatio", handle,
                      &IManagerSync::GetProjectDutioRatio, ratio);
}

RETSTATUS SetIRLaserDutioRatio(void* const& handle, const int& ratio) {
    return ExportCall(Variant::Standard, "SetIRLaserDutioRatio", handle,
                      &IManagerSync::SetIRLaserDutioRatio, ratio);
}

RETSTATUS GetIRLaserDutioRatio(void* const& handle, int& ratio) {
    return ExportCall(Variant::Standard, "GetIRLaserDutioRatio", handle,
                      &IManagerSync::GetIRLaserDutioRatio, ratio);
}

RETSTATUS SetStrobeWorkTime(void* const& handle, const int& timeWithTexture, const int& time) {
    return ExportCall(Variant::DirectOnly, "SetStrobeWorkTime", handle,
                      &IManagerSync::SetStrobeWorkTime, timeWithTexture, time);
}

RETSTATUS GetStrobeWorkTime(void* const& handle, int& timeWithTexture, int& time) {
    return ExportCall(Variant::DirectOnly, "GetStrobeWorkTime", handle,
                      &IManagerSync::GetStrobeWorkTime, timeWithTexture, time);
}

RETSTATUS SetLaserLineWorkTime(void* const& handle, const int& time) {
    return ExportCall(Variant::DirectOnly, "SetLaserLineWorkTime", handle,
                      &IManagerSync::SetLaserLineWorkTime, time);
}

RETSTATUS GetLaserLineWorkTime(void* const& handle, int& time) {
    return ExportCall(Variant::DirectOnly, "GetLaserLineWorkTime", handle,
                      &IManagerSync::GetLaserLineWorkTime, time);
}

RETSTATUS SetProjectWorkTime(void* const& handle, const int& time) {
    return ExportCall(Variant::DirectOnly, "SetProjectWorkTime", handle,
                      &IManagerSync::SetProjectWorkTime, time);
}

RETSTATUS GetProjectWorkTime(void* const& handle, int& time) {
    return ExportCall(Variant::DirectOnly, "GetProjectWorkTime", handle,
                      &IManagerSync::GetProjectWorkTime, time);
}

RETSTATUS SetIRLaserWorkTime(void* const& handle, const int& time) {
    return ExportCall(Variant::DirectOnly, "SetIRLaserWorkTime", handle,
                      &IManagerSync::SetIRLaserWorkTime, time);
}

RETSTATUS GetIRLaserWorkTime(void* const& handle, int& time) {
    return ExportCall(Variant::DirectOnly, "GetIRLaserWorkTime", handle,
                      &IManagerSync::GetIRLaserWorkTime, time);
}

RETSTATUS SetVideoTriggerPeriod(void* const& handle, const int& period) {
    return ExportCall(Variant::Standard, "SetVideoTriggerPeriod", handle,
                      &IManagerSync::SetVideoTriggerPeriod, period);
}

RETSTATUS GetVideoTriggerPeriod(void* const& handle, int& period) {
    return ExportCall(Variant::Standard, "GetVideoTriggerPeriod", handle,
                      &IManagerSync::GetVideoTriggerPeriod, period);
}

RETSTATUS EnableVideoTrigger(void* const& handle, const CAMERA_TRIGGER_MODE& mode,
                             const bool& enable) {
    return ExportCall(Variant::Standard, "EnableVideoTrigger", handle,
                      &IManagerSync::EnableVideoTrigger, mode, enable);
}

RETSTATUS SetDistanceIndicate(void* const& handle, const DISTANCESTATUS& state) {
    return ExportCall(Variant::Standard, "SetDistanceIndicate", handle, [&](IManagerSync& manager) {
        const RETSTATUS status = manager.SetDistanceIndicate(state);
        KORVEX_LOG(kInterfaceLog) << "SetDistanceIndicate leave";
        return status;
    });
}

}  // namespace Korvex3Sync
