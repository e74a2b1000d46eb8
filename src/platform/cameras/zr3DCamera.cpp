#include "platform/include/zr3DCamera.h"

#include <chrono>
#include <locale>
#include <sstream>
#include <string_view>
#include <utility>

#include "platform/cameras/Camera.h"
#include "platform/cameras/Drivers.h"
#include "platform/cameras/ParameterWord.h"
#include "platform/os/Clock.h"
#include "platform/os/HandleTable.h"

// No function here calls another exported one, because a preloaded library may replace any of them.
namespace zr3DCamera {
namespace {

using Korvex3Sync::cameras::Camera;

constexpr int kOk = 0;
constexpr int kFailed = -1;
constexpr int kMonoMode = 1;
constexpr int kColorMode = 16;
constexpr int kPresentType = 1;
/// The parameter for words with camera order, exposure and gain.
constexpr CAMPARAM kOrderParameter{5};
constexpr std::size_t kLongestArgument = 80;
/// How long a snap waits for a frame. Nominal time.
constexpr std::chrono::milliseconds kSnapLimit{100};

/// Never destroyed: instances that the application did not release stay valid, and threads may be
/// in a call while the process ends.
Korvex3Sync::os::HandleTable<Camera>& Cameras() {
    static auto* const cameras = new Korvex3Sync::os::HandleTable<Camera>;
    return *cameras;
}

template <class... Values>
std::string Joined(const Values&... values) {
    if constexpr (sizeof...(values) == 0) {
        return {};
    } else {
        std::ostringstream text;
        text.imbue(std::locale::classic());
        const char* separator = "";
        ((text << std::exchange(separator, ", ") << values), ...);
        return text.str();
    }
}

/// Runs `work` on the camera of a handle, through its driver. False for an unknown handle or an
/// exception: no exception leaves this library.
template <class Work, class... Values>
bool Run(const char* name, std::pair<const char*, const char*> results, void* handle, Work work,
         const Values&... arguments) noexcept {
    try {
        const auto camera = Cameras().Find(handle);
        return camera && camera->Run({name, Joined(arguments...), results.first, results.second},
                                     [&] { return work(*camera); });
    } catch (...) {
        return false;
    }
}

/// For the functions that return an int.
template <class Work, class... Values>
int RunInt(const char* name, void* handle, Work work, const Values&... arguments) noexcept {
    return Run(name, {"0", "-1"}, handle, work, arguments...) ? kOk : kFailed;
}

/// For the functions that return a bool.
template <class Work, class... Values>
bool RunBool(const char* name, void* handle, Work work, const Values&... arguments) noexcept {
    return Run(name, {"true", "false"}, handle, work, arguments...);
}

bool ApplyWord(Camera& camera, int value) {
    const auto word = Korvex3Sync::cameras::DecodeParameterWord(value);
    if (!word) {
        return false;
    }
    return word->setting
               ? camera.SelectAndSet(word->order, word->setting->exposure, word->setting->gain)
               : camera.SelectOrder(word->order);
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
        handle = Cameras().Add(std::move(camera));
        return kOk;
    } catch (...) {
        return kFailed;
    }
}

int ReleaseCamera(void*& handle) {
    return RunInt("ReleaseCamera", handle, [&handle](Camera& camera) {
        if (!camera.Release() || !Cameras().Take(handle)) {
            return false;
        }
        handle = nullptr;
        return true;
    });
}

int GetDeviceTotal(void* handle, int& total) {
    return RunInt("GetDeviceTotal", handle,
                  [&](Camera& camera) { return camera.CountDevices(total); });
}

int OpenCamera(void* handle, const int& index, const int& width, const int& height) {
    return RunInt(
        "OpenCamera", handle,
        [&](Camera& camera) { return camera.OpenIndex(index, width, height); }, index, width,
        height);
}

int OpenCamera(void* handle, const char* const& serial, const int& width, const int& height) {
    if (serial == nullptr) {
        return kFailed;
    }
    return RunInt(
        "OpenCamera", handle,
        [&](Camera& camera) { return camera.OpenSerial(serial, width, height); },
        std::string_view(serial).substr(0, kLongestArgument), width, height);
}

int CloseCamera(void* handle) {
    return RunInt("CloseCamera", handle, [](Camera& camera) { return camera.Close(); });
}

int StartCamera(void* handle, double value) {
    return RunInt(
        "StartCamera", handle, [](Camera& camera) { return camera.Start(); }, value);
}

int SnapShot(void* handle, unsigned char*& image) {
    image = nullptr;
    return RunInt("SnapShot", handle, [&](Camera& camera) {
        return camera.Snap(std::chrono::steady_clock::now() + Korvex3Sync::os::Scaled(kSnapLimit),
                           image);
    });
}

int GetSerialNo(void* handle, std::string& serial) {
    return RunInt("GetSerialNo", handle, [&](Camera& camera) { return camera.Serial(serial); });
}

int GetResolution(void* handle, int& width, int& height) {
    return RunInt("GetResolution", handle,
                  [&](Camera& camera) { return camera.Resolution(width, height); });
}

int GetColorMode(void* handle, ZR_IMG_FORMAT& mode) {
    return RunInt("GetColorMode", handle, [&](Camera& camera) {
        bool color = false;
        if (!camera.HasColor(color)) {
            return false;
        }
        mode = ZR_IMG_FORMAT{color ? kColorMode : kMonoMode};
        return true;
    });
}

int GetGainRange(void* handle, int& low, int& high) {
    return RunInt("GetGainRange", handle,
                  [&](Camera& camera) { return camera.GainRange(low, high); });
}

int SetExposureTime(void* handle, long time) {
    return RunInt(
        "SetExposureTime", handle, [time](Camera& camera) { return camera.SetExposure(time); },
        time);
}

int GetExposureTime(void* handle, long& time) {
    return RunInt("GetExposureTime", handle, [&](Camera& camera) { return camera.Exposure(time); });
}

int SetGain(void* handle, int gain) {
    return RunInt(
        "SetGain", handle, [gain](Camera& camera) { return camera.SetGain(gain); }, gain);
}

int GetGain(void* handle, int& gain) {
    return RunInt("GetGain", handle, [&](Camera& camera) { return camera.Gain(gain); });
}

bool SetCameraIntParam(void* handle, CAMPARAM parameter, int value) {
    return RunBool(
        "SetCameraIntParam", handle,
        [=](Camera& camera) { return parameter == kOrderParameter && ApplyWord(camera, value); },
        int{parameter}, value);
}

bool GetDeviceType(void* handle, int& type) {
    return RunBool("GetDeviceType", handle, [&](Camera& camera) {
        if (!camera.IsPresent()) {
            return false;
        }
        type = kPresentType;
        return true;
    });
}

bool ResetCameraState(void* handle) {
    return RunBool("ResetCameraState", handle, [](Camera& camera) { return camera.ResetState(); });
}

bool UnlockOthers(void* handle) {
    return RunBool("UnlockOthers", handle, [](Camera& camera) { return camera.UnlockOthers(); });
}

}  // namespace zr3DCamera
