#include "Korvex3Sync/Images.h"

#include "interface/CallFrame.h"

namespace Korvex3Sync {

RETSTATUS SetScanCallBackFunction(void* const& handle, ScanCallBackFunction callback,
                                  void* context) {
    return ExportCall(Variant::Standard, "SetScanCallBackFunction", handle,
                      &IManagerSync::SetScanCallBackFunction, callback, context);
}

RETSTATUS SetStatusCallBackFunction(void* const& handle, StatusCallBackFunction callback,
                                    void* context) {
    return ExportCall(Variant::Standard, "SetStatusCallBackFunction", handle,
                      &IManagerSync::SetStatusCallBackFunction, callback, context);
}

RETSTATUS SnapColorImage(void* const& handle, std::vector<unsigned char*>& images, int& width,
                         int& height, const int& cameraIndex, double& exposure, int& gain,
                         const CONTROLROUTE& route) {
    return ExportCall(Variant::Standard, "SnapColorImage", handle, &IManagerSync::SnapColorImage,
                      images, width, height, cameraIndex, exposure, gain, route);
}

RETSTATUS SnapColorImageForIR(void* const& handle, std::vector<unsigned char*>& images, int& width,
                              int& height, const int& cameraIndex, std::vector<double>& exposures,
                              std::vector<int>& gains, const CONTROLROUTE& route) {
    return ExportCall(Variant::AlwaysDirect, "SnapColorImageForIR", handle,
                      &IManagerSync::SnapColorImageForIR, images, width, height, cameraIndex,
                      exposures, gains, route);
}

}  // namespace Korvex3Sync
