// The operations that differ from others only in the table of ForwardedOperations.h.
#include "service/Forwarding.h"

namespace Korvex3Sync {

RETSTATUS zr3DHandiSyncQT::ReconnectDevice(void*) {
    return Get(forwarded::kReconnectDevice);
}

RETSTATUS zr3DHandiSyncQT::CloseDeviceCamera(void*) {
    return Get(forwarded::kCloseDeviceCamera);
}

RETSTATUS zr3DHandiSyncQT::GetConnectCameraCount(void*, int& count) {
    return Get(forwarded::kGetConnectCameraCount, count);
}

RETSTATUS zr3DHandiSyncQT::GetCameraResolution(void*, int camOrder, int& width, int& height) {
    return GetOf(forwarded::kGetCameraResolution, camOrder, width, height);
}

RETSTATUS zr3DHandiSyncQT::EnableHeartbeat(void*, bool&) {
    return STATUS_SUCCESS;
}

RETSTATUS zr3DHandiSyncQT::Project(void*, PROJECTWORKTYPES type) {
    return Set(forwarded::kProject, type);
}

RETSTATUS zr3DHandiSyncQT::SetProjectorBrightness(void*, int level) {
    return Set(forwarded::kProjectorBrightness, level);
}

RETSTATUS zr3DHandiSyncQT::GetProjectorBrightness(void*, int& level) {
    return Get(forwarded::kGetProjectorBrightness, level);
}

RETSTATUS zr3DHandiSyncQT::EnableBlueLaser(void*, LASERWORKMODE mode, bool enable) {
    return Set(forwarded::kBlueLaser, mode, enable);
}

RETSTATUS zr3DHandiSyncQT::EnableIRLaser(void*, bool enable) {
    return Set(forwarded::kIRLaser, enable);
}

RETSTATUS zr3DHandiSyncQT::SetStrobeControlledByTrigger(void*, CONTROLROUTE route,
                                                        STROBE_STATE state) {
    return Set(forwarded::kStrobeControlledByTrigger, route, state);
}

RETSTATUS zr3DHandiSyncQT::SetStrobeDutioRatio(void*, int texture, int ratio,
                                               int ratioWithTexture) {
    return Set(forwarded::kStrobeDutioRatio, texture, ratio, ratioWithTexture);
}

RETSTATUS zr3DHandiSyncQT::GetStrobeDutioRatio(void*, int& texture, int& ratio,
                                               int& ratioWithTexture) {
    return Get(forwarded::kGetStrobeDutioRatio, texture, ratio, ratioWithTexture);
}

RETSTATUS zr3DHandiSyncQT::SetLaserLineDutioRatio(void*, int ratio) {
    return Set(forwarded::kLaserLineDutioRatio, ratio);
}

RETSTATUS zr3DHandiSyncQT::GetLaserLineDutioRatio(void*, int& ratio) {
    return Get(forwarded::kGetLaserLineDutioRatio, ratio);
}

RETSTATUS zr3DHandiSyncQT::SetProjectDutioRatio(void*, int ratio) {
    return Set(forwarded::kProjectDutioRatio, ratio);
}

RETSTATUS zr3DHandiSyncQT::GetProjectDutioRatio(void*, int& ratio) {
    return Get(forwarded::kGetProjectDutioRatio, ratio);
}

RETSTATUS zr3DHandiSyncQT::SetIRLaserDutioRatio(void*, int ratio) {
    return Set(forwarded::kIRLaserDutioRatio, ratio);
}

RETSTATUS zr3DHandiSyncQT::GetIRLaserDutioRatio(void*, int& ratio) {
    return Get(forwarded::kGetIRLaserDutioRatio, ratio);
}

RETSTATUS zr3DHandiSyncQT::SetVideoTriggerPeriod(void*, int period) {
    return Set(forwarded::kVideoTriggerPeriod, period);
}

RETSTATUS zr3DHandiSyncQT::GetVideoTriggerPeriod(void*, int& period) {
    return Get(forwarded::kGetVideoTriggerPeriod, period);
}

RETSTATUS zr3DHandiSyncQT::SetDistanceIndicate(void*, DISTANCESTATUS state) {
    if (ConnectedService() != nullptr && m_bReconnecting) {
        return STATUS_FAILED;
    }
    return Set(forwarded::kDistanceIndicate, state);
}

RETSTATUS zr3DHandiSyncQT::GetCameraExposureAndGain(void*, int camOrder, double& exposure,
                                                    int& gain) {
    return GetOf(forwarded::kGetCameraExposureAndGain, camOrder, exposure, gain);
}

}  // namespace Korvex3Sync
