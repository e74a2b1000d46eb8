#include "Korvex3Sync/Cameras.h"

#include "interface/CallFrame.h"

namespace Korvex3Sync {

RETSTATUS GetConnectCameraCount(void* const& handle, int&) {
    return ExportCall(Variant::Standard, "GetConnectCameraCount", handle, NotInThisVersion);
}

RETSTATUS GetCameraSerialNumber(void* const& handle, const int&, char*&) {
    return ExportCall(Variant::Standard, "GetCameraSerialNumber", handle, NotInThisVersion);
}

RETSTATUS GetCameraResolution(void* const& handle, const int&, int&, int&) {
    return ExportCall(Variant::Standard, "GetCameraResolution", handle, NotInThisVersion);
}

RETSTATUS SetCameraExposureAndGain(void* const& handle, const int&, const double&, const int&) {
    return ExportCall(Variant::Standard, "SetCameraExposureAndGain", handle, NotInThisVersion);
}

RETSTATUS GetCameraExposureAndGain(void* const& handle, const int&, double&, int&) {
    return ExportCall(Variant::Standard, "GetCameraExposureAndGain", handle, NotInThisVersion);
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
