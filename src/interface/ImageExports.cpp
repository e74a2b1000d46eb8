#include "Korvex3Sync/Images.h"

#include "interface/CallFrame.h"

namespace Korvex3Sync {

RETSTATUS SetScanCallBackFunction(void* const& handle, ScanCallBackFunction callback,
                                  void* context) {
    return ExportCall(
        Standard{&FramePath::SetScanCallBackFunction, &zr3DHandiSyncQT::SetScanCallBackFunction},
        "SetScanCallBackFunction", handle, callback, context);
}

RETSTATUS SetStatusCallBackFunction(void* const& handle, StatusCallBackFunction callback,
                                    void* context) {
    return ExportCall(Standard{&StatusPoller::SetStatusCallBackFunction,
                               &zr3DHandiSyncQT::SetStatusCallBackFunction},
                      "SetStatusCallBackFunction", handle, callback, context);
}

RETSTATUS SnapColorImage(void* const& handle, std::vector<unsigned char*>& images, int& width,
                         int& height, const int& cameraIndex, double& exposure, int& gain,
                         const CONTROLROUTE& route) {
    return ExportCall(Standard{&ColorSnapshot::SnapColorImage, &zr3DHandiSyncQT::SnapColorImage},
                      "SnapColorImage", handle, images, width, height, cameraIndex, exposure, gain,
                      route);
}

RETSTATUS SnapColorImageForIR(void* const& handle, std::vector<unsigned char*>& images, int& width,
                              int& height, const int& cameraIndex, std::vector<double>& exposures,
                              std::vector<int>& gains, const CONTROLROUTE& route) {
    return ExportCall(AlwaysDirect{&ColorSnapshot::SnapColorImageForIR}, "SnapColorImageForIR",
                      handle, images, width, height, cameraIndex, exposures, gains, route);
}

}  // namespace Korvex3Sync
