#include "Korvex3Sync/Discovery.h"
#include "camera/discovery/CameraDiscovery.h"
#include "interface/CallFrame.h"
#include "sync/board/Usb3Check.h"

namespace Korvex3Sync {
namespace {

constexpr char kVersion[] = "1.2.0.1";

}  // namespace

RETSTATUS GetCamerasInformation(const char* const& cameraType, std::vector<char*>& serials,
                                std::vector<int>& widths, std::vector<int>& heights,
                                std::vector<bool>& isColor, int& cameraCount) {
    const os::CancellationOff cancellation;
    KORVEX_LOG(kInterfaceLog) << "zr3DHandiSync version: " << kVersion;
    if (ServiceMode()) {
        return ServiceCall(&zr3DHandiSyncQT::GetCamerasInformation, cameraType, serials, widths,
                           heights, isColor, cameraCount);
    }
    return NoThrow([&] {
        cameraCount =
            GetAllSpecifyTypeCameraInformation(cameraType, serials, widths, heights, isColor);
        KORVEX_LOG(kInterfaceLog) << "SerialsCount:" << serials.size()
                                  << "cameraCount:" << cameraCount;
        return STATUS_SUCCESS;
    });
}

RETSTATUS GetCameraCount(const char* const& cameraType, int& count) {
    const os::CancellationOff cancellation;
    LogEnter("GetCameraCount");
    if (ServiceMode()) {
        return ServiceCall(&zr3DHandiSyncQT::GetCameraCount, cameraType, count);
    }
    return NoThrow([&] {
        count = GetSpecifyTypeCameraCount(cameraType);
        KORVEX_LOG(kInterfaceLog) << "GetCameraCount leave";
        return STATUS_SUCCESS;
    });
}

RETSTATUS IsConnectedOnU3(const char*, bool& onU3) {
    const os::CancellationOff cancellation;
    LogEnter("IsConnectedOnU3");
    return NoThrow([&] { return FindBoardUsbSpeed(onU3) ? STATUS_SUCCESS : STATUS_FAILED; });
}

}  // namespace Korvex3Sync
