#include "device_service/core/Cameras.h"

#include <Korvex3Sync/Discovery.h>

namespace Korvex3Sync::device_service {

CameraList::CameraList(const std::string& type) {
    status = GetCamerasInformation(type.c_str(), serials, widths, heights, colors, count);
}

CameraList::~CameraList() {
    for (const char* serial : serials) {
        delete[] serial;
    }
}

}  // namespace Korvex3Sync::device_service
