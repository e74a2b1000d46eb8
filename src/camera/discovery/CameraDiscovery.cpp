#include "camera/discovery/CameraDiscovery.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "camera/CameraLog.h"
#include "camera/ColorMode.h"
#include "platform/include/zr3DCamera.h"
#include "platform/os/Log.h"
#include "platform/os/Print.h"

namespace Korvex3Sync {
namespace {

constexpr std::size_t kSerialBuffer = 260;

void PrintCreateFailed(const char* cameraType) {
    os::Print("Create Camera Failed: %.2s\n", cameraType != nullptr ? cameraType : "");
}

/// Copies a serial to a buffer of 260 bytes; truncates a longer one.
std::unique_ptr<char[]> CopySerial(const std::string& serial) {
    auto buffer = std::make_unique<char[]>(kSerialBuffer);
    std::strncpy(buffer.get(), serial.c_str(), kSerialBuffer - 1);
    return buffer;
}

/// Closes and releases the instances with an index below `total`, also if memory runs out.
class ReleaseAtEnd {
public:
    ReleaseAtEnd(std::vector<void*>& instances, const int& total)
        : m_instances(instances), m_total(total) {}
    ~ReleaseAtEnd() {
        int position = 0;
        for (void*& camera : m_instances) {
            if (position++ < m_total && camera != nullptr) {
                zr3DCamera::CloseCamera(camera);
                zr3DCamera::ReleaseCamera(camera);
                camera = nullptr;
            }
        }
    }
    ReleaseAtEnd(const ReleaseAtEnd&) = delete;
    ReleaseAtEnd& operator=(const ReleaseAtEnd&) = delete;

private:
    std::vector<void*>& m_instances;
    const int& m_total;
};

/// Reserves space for `more` entries, so that appending to several lists cannot fail half-way.
template <class List>
void MakeRoom(List& list, int more) {
    list.reserve(list.size() + static_cast<std::size_t>(std::max(more, 0)));
}

/// Opens the camera of each instance and reads its data. Returns how many could be read.
int ReadCameras(const std::vector<void*>& instances, int total, std::vector<char*>& serials,
                std::vector<int>& widths, std::vector<int>& heights, std::vector<bool>& isColor) {
    MakeRoom(serials, total);
    MakeRoom(widths, total);
    MakeRoom(heights, total);
    MakeRoom(isColor, total);
    int read = 0;
    for (int i = 0; i < total; ++i) {
        void* const camera = instances[static_cast<std::size_t>(i)];
        if (camera == nullptr) {
            continue;
        }
        const int native = 0;
        if (zr3DCamera::OpenCamera(camera, i, native, native) != 0) {
            os::Print("Open Camera %d Failed\n", i);
            continue;
        }
        std::string serial;
        if (zr3DCamera::GetSerialNo(camera, serial) != 0) {
            os::Print("Get Camera %d Serial Failed\n", i);
            continue;
        }
        int width = 0;
        int height = 0;
        zr3DCamera::GetResolution(camera, width, height);
        auto text = CopySerial(serial);
        widths.push_back(width);
        heights.push_back(height);
        serials.push_back(text.release());
        zr3DCamera::ZR_IMG_FORMAT mode{1};
        zr3DCamera::GetColorMode(camera, mode);
        const bool color = IsColorCamera(mode);
        os::Print("Camera Is Color Mode: %d\n", color ? 1 : 0);
        isColor.push_back(color);
        ++read;
        int low = 0;
        int high = 0;
        zr3DCamera::GetGainRange(camera, low, high);
        os::Print("Camera %d gain range %d - %d\n", i, low, high);
    }
    return read;
}

}  // namespace

int GetAllSpecifyTypeCameraInformation(const char* const& cameraType, std::vector<char*>& serials,
                                       std::vector<int>& widths, std::vector<int>& heights,
                                       std::vector<bool>& isColor) {
    KORVEX_LOG(kPhysicalCameraThreadLog) << "GetAllSpecifyTypeCameraInformation 0";
    std::vector<void*> instances{nullptr};
    void*& first = instances.front();
    if (zr3DCamera::CreateCamera(first, cameraType) != 0) {
        PrintCreateFailed(cameraType);
        KORVEX_LOG(kPhysicalCameraThreadLog) << "GetAllSpecifyTypeCameraInformation failed";
        zr3DCamera::ReleaseCamera(first);
        return 0;
    }
    int total = 0;
    if (zr3DCamera::GetDeviceTotal(first, total) != 0) {
        os::Print("Device Total: %d\n", total);
        KORVEX_LOG(kPhysicalCameraThreadLog) << "GetAllSpecifyTypeCameraInformation failed1";
        zr3DCamera::ReleaseCamera(first);
        return 0;
    }

    // With a total of 0 the first instance is not released either, because its index is not below
    // the total.
    int read = 0;
    {
        const ReleaseAtEnd release(instances, total);
        for (int device = 1; device < total; ++device) {
            MakeRoom(instances, 1);
            void* instance = nullptr;
            if (zr3DCamera::CreateCamera(instance, cameraType) == 0 && instance != nullptr) {
                instances.push_back(instance);
            }
        }
        if (static_cast<int>(instances.size()) < total) {
            total = static_cast<int>(instances.size());
        }
        read = ReadCameras(instances, total, serials, widths, heights, isColor);
    }
    KORVEX_LOG(kPhysicalCameraThreadLog)
        << "GetAllSpecifyTypeCameraInformation tmpRealCount=" << read;
    return read;
}

int GetSpecifyTypeCameraCount(const char* const& cameraType) {
    KORVEX_LOG(kPhysicalCameraThreadLog) << "GetSpecifyTypeCameraCount ";
    // The instance is never released; it does not block anything.
    void* instance = nullptr;
    if (zr3DCamera::CreateCamera(instance, cameraType) != 0) {
        PrintCreateFailed(cameraType);
        KORVEX_LOG(kPhysicalCameraThreadLog) << "GetSpecifyTypeCameraCount ok";
        return 0;
    }
    KORVEX_LOG(kPhysicalCameraThreadLog) << "GetSpecifyTypeCameraCount 1";
    int total = 0;
    if (zr3DCamera::GetDeviceTotal(instance, total) != 0) {
        os::Print("Device Total: %d\n", total);
        KORVEX_LOG(kPhysicalCameraThreadLog) << "GetSpecifyTypeCameraCount ok1";
        return 0;
    }
    KORVEX_LOG(kPhysicalCameraThreadLog) << "GetSpecifyTypeCameraCount tmpCameraNum=" << total;
    return total;
}

}  // namespace Korvex3Sync
