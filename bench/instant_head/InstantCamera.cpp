// A camera that always has a frame: SnapShot returns the next packed frame of a ring at once. Any
// serial and any size opens.

#include <array>
#include <vector>

#include "platform/include/zr3DCamera.h"

namespace zr3DCamera {
namespace {

constexpr int kFailed = -1;
/// At 1280 x 1024 the ring is larger than the caches, as the frames of a real camera are.
constexpr std::size_t kFrames = 32;
constexpr std::size_t kKeyByte = 4;
constexpr int kDefaultSize = 16;

struct Camera {
    int width = 0;
    int height = 0;
    std::array<std::vector<unsigned char>, kFrames> frames;
    std::size_t next = 0;
};

Camera& Of(void* handle) {
    return *static_cast<Camera*>(handle);
}

int Result(bool good) {
    return good ? 0 : kFailed;
}

}  // namespace

int CreateCamera(void*& handle, const char* const&) {
    handle = new Camera;
    return 0;
}

int ReleaseCamera(void*& handle) {
    delete static_cast<Camera*>(handle);
    handle = nullptr;
    return 0;
}

int GetDeviceTotal(void* handle, int& total) {
    total = 1;
    return Result(handle != nullptr);
}

int OpenCamera(void* handle, const int&, const int& width, const int& height) {
    if (handle == nullptr) {
        return kFailed;
    }
    Camera& camera = Of(handle);
    camera.width = width > 0 ? width : kDefaultSize;
    camera.height = height > 0 ? height : kDefaultSize;
    const auto bytes =
        2 * static_cast<std::size_t>(camera.width) * static_cast<std::size_t>(camera.height);
    unsigned char value = 0;
    for (auto& frame : camera.frames) {
        frame.assign(bytes, ++value);
    }
    return 0;
}

int OpenCamera(void* handle, const char* const&, const int& width, const int& height) {
    return OpenCamera(handle, 0, width, height);
}

int CloseCamera(void* handle) {
    return Result(handle != nullptr);
}

int StartCamera(void* handle, double) {
    return Result(handle != nullptr);
}

int SnapShot(void* handle, unsigned char*& image) {
    if (handle == nullptr || Of(handle).width == 0) {
        image = nullptr;
        return kFailed;
    }
    Camera& camera = Of(handle);
    auto& frame = camera.frames[camera.next % kFrames];
    frame[kKeyByte] = static_cast<unsigned char>(camera.next++);
    image = frame.data();
    return 0;
}

int GetSerialNo(void* handle, std::string& serial) {
    serial = "KV00I0001";
    return Result(handle != nullptr);
}

int GetResolution(void* handle, int& width, int& height) {
    if (handle == nullptr) {
        return kFailed;
    }
    width = Of(handle).width;
    height = Of(handle).height;
    return 0;
}

int GetColorMode(void* handle, ZR_IMG_FORMAT& mode) {
    mode = ZR_IMG_FORMAT{1};
    return Result(handle != nullptr);
}

int GetGainRange(void* handle, int& low, int& high) {
    low = 0;
    high = 63;
    return Result(handle != nullptr);
}

int SetExposureTime(void* handle, long) {
    return Result(handle != nullptr);
}

int GetExposureTime(void* handle, long& time) {
    time = 1000;
    return Result(handle != nullptr);
}

int SetGain(void* handle, int) {
    return Result(handle != nullptr);
}

int GetGain(void* handle, int& gain) {
    gain = 0;
    return Result(handle != nullptr);
}

bool SetCameraIntParam(void* handle, CAMPARAM, int) {
    return handle != nullptr;
}

bool GetDeviceType(void* handle, int& type) {
    type = 1;
    return handle != nullptr;
}

bool ResetCameraState(void*) {
    return true;
}

bool UnlockOthers(void*) {
    return true;
}

}  // namespace zr3DCamera
