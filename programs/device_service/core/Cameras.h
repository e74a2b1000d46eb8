#pragma once

#include <Korvex3Sync/Status.h>

#include <string>
#include <vector>

namespace Korvex3Sync::device_service {

/// The cameras of a type, as discovery gives them and ConnectDevice takes them. A camera that
/// several sensors share is listed once for each of them.
struct CameraList {
    /// Opens and closes each camera.
    explicit CameraList(const std::string& type);
    ~CameraList();
    CameraList(const CameraList&) = delete;
    CameraList& operator=(const CameraList&) = delete;

    RETSTATUS status = STATUS_FAILED;
    std::vector<char*> serials;
    std::vector<int> widths;
    std::vector<int> heights;
    std::vector<bool> colors;
    int count = 0;
};

}  // namespace Korvex3Sync::device_service
