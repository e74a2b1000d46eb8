#include "Korvex3Sync/Cameras.h"

#include "interface/CallFrame.h"

namespace Korvex3Sync {

RETSTATUS GetConnectCameraCount(void* const& handle, int& count) {
    return ExportCall(
        Standard{&CameraSet::GetConnectCameraCount, &zr3DHandiSyncQT::GetConnectCameraCount},
        "GetConnectCameraCount", handle, count);
}

RETSTATUS GetCameraSerialNumber(void* const& handle, const int& cameraIndex, char*& serial) {
    return ExportCall(
        Standard{&CameraSet::GetCameraSerialNumber, &zr3DHandiSyncQT::GetCameraSerialNumber},
        "GetCameraSerialNumber", handle, cameraIndex, serial);
}

RETSTATUS GetCameraResolution(void* const& handle, const int& cameraIndex, int& width,
                              int& height) {
    return ExportCall(
        Standard{&CameraSet::GetCameraResolution, &zr3DHandiSyncQT::GetCameraResolution},
        "GetCameraResolution", handle, cameraIndex, width, height);
}

RETSTATUS SetCameraExposureAndGain(void* const& handle, const int& cameraIndex,
                                   const double& exposure, const int& gain) {
    return ExportCall(
        Standard{&CameraSet::SetCameraExposureAndGain, &zr3DHandiSyncQT::SetCameraExposureAndGain},
        "SetCameraExposureAndGain", handle, cameraIndex, exposure, gain);
}

RETSTATUS GetCameraExposureAndGain(void* const& handle, const int& cameraIndex, double& exposure,
                                   int& gain) {
    return ExportCall(
        Standard{&CameraSet::GetCameraExposureAndGain, &zr3DHandiSyncQT::GetCameraExposureAndGain},
        "GetCameraExposureAndGain", handle, cameraIndex, exposure, gain);
}

RETSTATUS SetCameraExposure(void* const&, const int&, const double&) {
    return STATUS_NOT_SUPPORTED;
}

RETSTATUS GetCameraExposure(void* const&, const int&, double&) {
    return STATUS_NOT_SUPPORTED;
}

RETSTATUS SetCameraGain(void* const&, const int&, const int&) {
    return STATUS_NOT_SUPPORTED;
}

RETSTATUS GetCameraGain(void* const&, const int&, int&) {
    return STATUS_NOT_SUPPORTED;
}

}  // namespace Korvex3Sync
