#include <algorithm>
#include <map>
#include <memory>
#include <mutex>

#include "platform/include/zr3DCamera.h"
#include "recorder/Recorder.h"

namespace zr3DCamera {
namespace {

namespace recorder = Korvex3Sync::tests::recorder;

constexpr int kFailed = -5;

recorder::Recorder& R() {
    return recorder::Recorder::Get();
}

std::string N(void* handle) {
    return R().Name(handle);
}

/// The open camera of an instance, and the buffer of its last snap.
struct Instance {
    recorder::Camera camera;
    std::vector<unsigned char> buffer;
};

std::mutex g_mutex;
std::map<void*, std::shared_ptr<Instance>>& Instances() {
    static auto* const instances = new std::map<void*, std::shared_ptr<Instance>>;
    return *instances;
}

std::shared_ptr<Instance> Find(void* handle) {
    std::lock_guard lock(g_mutex);
    const auto found = Instances().find(handle);
    return found == Instances().end() ? nullptr : found->second;
}

int Open(void* handle, const recorder::Camera& camera) {
    std::lock_guard lock(g_mutex);
    Instances()[handle] = std::make_shared<Instance>(Instance{camera, {}});
    return 0;
}

const char* Text(const char* text) {
    return text != nullptr ? text : "null";
}

}  // namespace

int CreateCamera(void*& handle, const char* const& cameraTypeOrSerial) {
    if (!R().Record("CreateCamera", Text(cameraTypeOrSerial)) || cameraTypeOrSerial == nullptr) {
        return kFailed;
    }
    handle = R().NewHandle("C");
    return 0;
}

int ReleaseCamera(void*& handle) {
    const bool ok = R().Record("ReleaseCamera", N(handle));
    {
        std::lock_guard lock(g_mutex);
        Instances().erase(handle);
    }
    R().DropHandle(handle);
    handle = nullptr;
    return ok ? 0 : kFailed;
}

int GetDeviceTotal(void* handle, int& total) {
    // Read before an action of the test may make memory allocation fail, which is meant for the
    // caller.
    const auto attached = static_cast<int>(R().Attached().size());
    const bool ok = R().Record("GetDeviceTotal", N(handle));
    if (ok) {
        total = attached;
    }
    return ok ? 0 : kFailed;
}

int OpenCamera(void* handle, const int& index, const int& width, const int& height) {
    if (!R().Record("OpenCamera", N(handle), index, width, height)) {
        return kFailed;
    }
    const auto cameras = R().Attached();
    return index < static_cast<int>(cameras.size())
               ? Open(handle, cameras[static_cast<std::size_t>(index)])
               : kFailed;
}

int OpenCamera(void* handle, const char* const& serial, const int& width, const int& height) {
    if (!R().Record("OpenCamera", N(handle), Text(serial), width, height)) {
        return kFailed;
    }
    for (const auto& camera : R().Attached()) {
        if (camera.serial == serial) {
            return Open(handle, camera);
        }
    }
    return kFailed;
}

int CloseCamera(void* handle) {
    return R().Record("CloseCamera", N(handle)) ? 0 : kFailed;
}

int StartCamera(void* handle, double value) {
    return R().Record("StartCamera", N(handle), value) ? 0 : kFailed;
}

int SnapShot(void* handle, unsigned char*& image) {
    const bool ok = R().Record("SnapShot", N(handle));
    const auto instance = Find(handle);
    recorder::Snap snap;
    if (!instance || !R().TakeSnap(snap)) {
        image = nullptr;
        return kFailed;
    }
    instance->buffer = std::move(snap.bytes);
    image = snap.nullImage ? nullptr : instance->buffer.data();
    return ok ? snap.result : kFailed;
}

int GetSerialNo(void* handle, std::string& serial) {
    const auto instance = Find(handle);
    if (!R().Record("GetSerialNo", N(handle)) || !instance) {
        return kFailed;
    }
    serial = instance->camera.serial;
    return 0;
}

int GetResolution(void* handle, int& width, int& height) {
    const auto instance = Find(handle);
    if (!R().Record("GetResolution", N(handle)) || !instance) {
        return kFailed;
    }
    width = instance->camera.width;
    height = instance->camera.height;
    return 0;
}

int GetColorMode(void* handle, ZR_IMG_FORMAT& mode) {
    const auto instance = Find(handle);
    if (!R().Record("GetColorMode", N(handle)) || !instance) {
        return kFailed;
    }
    mode = ZR_IMG_FORMAT{instance->camera.colorMode};
    return 0;
}

int GetGainRange(void* handle, int& low, int& high) {
    low = 1;
    high = 9;
    return R().Record("GetGainRange", N(handle)) ? 0 : kFailed;
}

int SetExposureTime(void* handle, long time) {
    return R().Record("SetExposureTime", N(handle), time) ? 0 : kFailed;
}

int GetExposureTime(void* handle, long& time) {
    time = R().Value("exposure");
    return R().Record("GetExposureTime", N(handle)) ? 0 : kFailed;
}

int SetGain(void* handle, int gain) {
    return R().Record("SetGain", N(handle), gain) ? 0 : kFailed;
}

int GetGain(void* handle, int& gain) {
    gain = R().Value("gain");
    return R().Record("GetGain", N(handle)) ? 0 : kFailed;
}

bool SetCameraIntParam(void* handle, CAMPARAM parameter, int value) {
    return R().Record("SetCameraIntParam", N(handle), int{parameter}, value);
}

bool GetDeviceType(void* handle, int& type) {
    const auto instance = Find(handle);
    type = instance ? instance->camera.deviceType : 1;
    return R().Record("GetDeviceType", N(handle));
}

bool ResetCameraState(void* handle) {
    return R().Record("ResetCameraState", N(handle));
}

bool UnlockOthers(void* handle) {
    return R().Record("UnlockOthers", N(handle));
}

}  // namespace zr3DCamera
