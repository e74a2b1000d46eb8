#include "Korvex3Sync/Cameras.h"

#include "interface/CallFrame.h"

namespace Korvex3Sync {

RETSTATUS GetConnectCameraCount(void* const& handle, int& count) {
    return ExportCall(Variant::Standard, "GetConnectCameraCount", handle,
                      &IManagerSync::GetConnectCameraCount, count);
}

RETSTATUS GetCameraSerialNumber(void* const& handle, const int& cameraIndex, char*& serial) {
    return ExportCall(Variant::Standard, "GetCameraSerialNumber", handle,
                      &IManagerSync::GetCameraSerialNumber, cameraIndex, serial);
}

RETSTATUS GetCameraResolution(void* const& handle, const int& cameraIndex, int& width,
                              int& height) {
    return ExportCall(Variant::Standard, "GetCameraResolution", handle,
                      &IManagerSync::GetCameraResolution, cameraIndex, width, height);
}

RETSTATUS SetCameraExposureAndGain(void* const& handle, const int& cameraIndex,
                                   const double& exposure, const int& gain) {
    return ExportCall(Variant::Standard, "SetCameraExposureAndGain", handle,
                      &IManagerSync::SetCameraExposureAndGain, cameraIndex, exposure, gain);
}

RETSTATUS GetCameraExposureAndGain(void* const& handle, const int& cameraIndex, double& exposure,
                                   int& gain) {
    return ExportCall(Variant::Standard, "GetCameraExposureAndGain", handle,
                      &IManagerSync::GetCameraExposureAndGain, cameraIndex, exposure, gain);
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
