#include "platform/include/zr3DCamera.h"

#include <utility>

#include "platform/cameras/CameraRegistry.h"
#include "platform/cameras/Drivers.h"

// No function here calls another exported one: any of them may be replaced by a preloaded library.
namespace zr3DCamera {
namespace {

using Korvex3Sync::cameras::Camera;
using Korvex3Sync::cameras::CameraRegistry;
using Korvex3Sync::cameras::kFailed;
using Korvex3Sync::cameras::kOk;

/// Runs `work` on the camera of a handle. `failed` for a handle that is not there and for whatever
/// is thrown: nothing leaves this library.
template <class Result, class Work>
Result With(void* handle, Result failed, Work work) noexcept {
    try {
        const auto camera = CameraRegistry::Instance().Find(handle);
        return camera ? work(*camera) : failed;
    } catch (...) {
        return failed;
    }
}

}  // namespace

int CreateCamera(void*& handle, const char* const& cameraTypeOrSerial) {
    if (cameraTypeOrSerial == nullptr) {
        return kFailed;
    }
    try {
        auto camera = Korvex3Sync::cameras::MakeCamera(cameraTypeOrSerial);
        if (!camera) {
            return kFailed;
        }
        handle = CameraRegistry::Instance().Add(std::move(camera));
        return kOk;
    } catch (...) {
        return kFailed;
    }
}

int ReleaseCamera(void*& handle) {
    return With(handle, kFailed, [&handle](Camera& camera) {
        if (camera.Release() != kOk || !CameraRegistry::Instance().Remove(handle)) {
            return kFailed;
        }
        handle = nullptr;
        return kOk;
    });
}

int GetDeviceTotal(void* handle, int& total) {
    return With(handle, kFailed, [&](Camera& camera) { return camera.DeviceTotal(total); });
}

int OpenCamera(void* handle, const int& index, const int& width, const int& height) {
    return With(handle, kFailed,
                [&](Camera& camera) { return camera.OpenIndex(index, width, height); });
}

int OpenCamera(void* handle, const char* const& serial, const int& width, const int& height) {
    if (serial == nullptr) {
        return kFailed;
    }
    return With(handle, kFailed,
                [&](Camera& camera) { return camera.OpenSerial(serial, width, height); });
}

int CloseCamera(void* handle) {
    return With(handle, kFailed, [](Camera& camera) { return camera.Close(); });
}

int StartCamera(void* handle, double value) {
    return With(handle, kFailed, [value](Camera& camera) { return camera.Start(value); });
}

int SnapShot(void* handle, unsigned char*& image) {
    image = nullptr;
    return With(handle, kFailed, [&](Camera& camera) { return camera.Snap(image); });
}

int GetSerialNo(void* handle, std::string& serial) {
    return With(handle, kFailed, [&](Camera& camera) { return camera.Serial(serial); });
}

int GetResolution(void* handle, int& width, int& height) {
    return With(handle, kFailed, [&](Camera& camera) { return camera.Resolution(width, height); });
}

int GetColorMode(void* handle, ZR_IMG_FORMAT& mode) {
    return With(handle, kFailed, [&](Camera& camera) {
        int value = 0;
        const int result = camera.ColorMode(value);
        if (result == kOk) {
            mode = static_cast<ZR_IMG_FORMAT>(value);
        }
        return result;
    });
}

int GetGainRange(void* handle, int& low, int& high) {
    return With(handle, kFailed, [&](Camera& camera) { return camera.GainRange(low, high); });
}

int SetExposureTime(void* handle, long time) {
    return With(handle, kFailed, [time](Camera& camera) { return camera.SetExposure(time); });
}

int GetExposureTime(void* handle, long& time) {
    return With(handle, kFailed, [&](Camera& camera) { return camera.Exposure(time); });
}

int SetGain(void* handle, int gain) {
    return With(handle, kFailed, [gain](Camera& camera) { return camera.SetGain(gain); });
}

int GetGain(void* handle, int& gain) {
    return With(handle, kFailed, [&](Camera& camera) { return camera.Gain(gain); });
}

bool SetCameraIntParam(void* handle, CAMPARAM parameter, int value) {
    return With(handle, false,
                [=](Camera& camera) { return camera.SetIntParameter(parameter, value); });
}

bool GetDeviceType(void* handle, int& type) {
    return With(handle, false, [&](Camera& camera) { return camera.DeviceType(type); });
}

bool ResetCameraState(void* handle) {
    return With(handle, false, [](Camera& camera) { return camera.ResetState(); });
}

bool UnlockOthers(void* handle) {
    return With(handle, false, [](Camera& camera) { return camera.UnlockOthers(); });
}

}  // namespace zr3DCamera
