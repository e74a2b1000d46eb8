#include <cstring>

#include "platform/include/zr3DHandiDLPdev.h"
#include "recorder/Recorder.h"

namespace zr3DHandiDLPdev {
namespace {

namespace recorder = Korvex3Sync::tests::recorder;

recorder::Recorder& R() {
    return recorder::Recorder::Get();
}

std::string N(void* handle) {
    return R().Name(handle);
}

int V(const char* name) {
    return R().Value(name);
}

}  // namespace

bool zr3DInitHidDev(void*& handle, const char* vendorId, const char* productId,
                    const char* pcbSerial) {
    const bool ok = R().Record("zr3DInitHidDev", N(handle), vendorId, productId, pcbSerial);
    if (ok || R().LeavesHandlesOnFailure()) {
        handle = R().NewHandle("B");
    }
    return ok;
}

bool zr3DExitHidDev(void*& handle) {
    const bool ok = R().Record("zr3DExitHidDev", N(handle));
    R().DropHandle(handle);
    handle = nullptr;
    return ok;
}

bool zr3DQueryFirmwareVersionFast(const char* pcbSerial, std::string& version) {
    const bool ok = R().Record("zr3DQueryFirmwareVersionFast", pcbSerial);
    if (ok) {
        version = "9.8.7";
    }
    return ok;
}

bool zr3DQueryProjectorFirewareVersion(void* handle, std::string& version) {
    const bool ok = R().Record("zr3DQueryProjectorFirewareVersion", N(handle));
    if (ok) {
        version = "1.2.3";
    }
    return ok;
}

bool zr3DResetDevice(void* handle) {
    return R().Record("zr3DResetDevice", N(handle));
}

bool zr3DResetFPGA(void* handle) {
    return R().Record("zr3DResetFPGA", N(handle));
}

bool zr3DQueryCurrentStatus(void* handle, unsigned char& first, unsigned char& second) {
    const bool ok = R().Record("zr3DQueryCurrentStatus", N(handle));
    if (ok) {
        first = static_cast<unsigned char>(V("first"));
        second = static_cast<unsigned char>(V("second"));
    }
    return ok;
}

bool zr3DEnableHeartbeat(void* handle, bool enable) {
    return R().Record("zr3DEnableHeartbeat", N(handle), enable);
}

bool zr3DOpenOrCloseStrobeFlicker(void* handle, TRIGGERROUTE route, MASK_STROBE_STATE state) {
    return R().Record("zr3DOpenOrCloseStrobeFlicker", N(handle), int{route}, int{state});
}

bool zr3DSetLaserEnable(void* handle, bool enable, LASERWORKMODE mode) {
    return R().Record("zr3DSetLaserEnable", N(handle), enable, int{mode});
}

bool zr3DSetIRLaserEnable(void* handle, bool enable) {
    return R().Record("zr3DSetIRLaserEnable", N(handle), enable);
}

bool zr3DSetIRLaserLevel(void* handle, int level) {
    return R().Record("zr3DSetIRLaserLevel", N(handle), level);
}

bool zr3DSetVideoTriggerPeriod(void* handle, int period) {
    return R().Record("zr3DSetVideoTriggerPeriod", N(handle), period);
}

bool zr3DQueryTriggerPeriod(void* handle, int& period) {
    period = V("period");
    return R().Record("zr3DQueryTriggerPeriod", N(handle));
}

bool zr3DSetProjectorBrightness(void* handle, int brightness) {
    return R().Record("zr3DSetProjectorBrightness", N(handle), brightness);
}

bool zr3DQueryProjectorBrightness(void* handle, int& brightness) {
    brightness = V("brightness");
    return R().Record("zr3DQueryProjectorBrightness", N(handle));
}

bool zr3DSetVideoTrigleMode(void* handle, MASK_TRIGGER_MODE mode) {
    return R().Record("zr3DSetVideoTrigleMode", N(handle), int{mode});
}

bool zr3DProject(void* handle, PROJECTTYPE type) {
    return R().Record("zr3DProject", N(handle), int{type});
}

bool zr3DSetLedDutioRatio(void* handle, int selector, int texture, int ratio,
                          int ratioWithTexture) {
    return R().Record("zr3DSetLedDutioRatio", N(handle), selector, texture, ratio,
                      ratioWithTexture);
}

bool zr3DQueryLedDutioRatio(void* handle, int selector, int& texture, int& ratio,
                            int& ratioWithTexture) {
    texture = V("texture");
    ratio = V("ratio");
    ratioWithTexture = V("ratioWithTexture");
    return R().Record("zr3DQueryLedDutioRatio", N(handle), selector);
}

bool zr3DSetDutioRatio(void* handle, int selector, int ratio) {
    return R().Record("zr3DSetDutioRatio", N(handle), selector, ratio);
}

bool zr3DQueryDutioRatio(void* handle, int selector, int& ratio) {
    ratio = V("ratio");
    return R().Record("zr3DQueryDutioRatio", N(handle), selector);
}

bool zr3DSetLedWorkTime(void* handle, bool withTexture, int time) {
    return R().Record("zr3DSetLedWorkTime", N(handle), withTexture, time);
}

bool zr3DQueryLedWorkTime(void* handle, bool withTexture, int& time) {
    time = V(withTexture ? "timeWithTexture" : "time");
    return R().Record("zr3DQueryLedWorkTime", N(handle), withTexture);
}

bool zr3DSetWorkTime(void* handle, int selector, int time) {
    return R().Record("zr3DSetWorkTime", N(handle), selector, time);
}

bool zr3DQueryWorkTime(void* handle, int selector, int& time) {
    time = V("time");
    return R().Record("zr3DQueryWorkTime", N(handle), selector);
}

bool zr3DSetDistanceIndicateState(void* handle, DISTANCEINDICATE state) {
    return R().Record("zr3DSetDistanceIndicateState", N(handle), int{state});
}

bool zr3DWriteUserInfomation(void* handle, int address, const char* data, int length) {
    return R().Record("zr3DWriteUserInfomation", N(handle), address, data, length);
}

bool zr3DReadUserInfomation(void* handle, int address, char*& buffer) {
    const bool ok = R().Record("zr3DReadUserInfomation", N(handle), address);
    if (ok && buffer != nullptr) {
        std::memset(buffer, 'u', 256);
    }
    return ok;
}

}  // namespace zr3DHandiDLPdev
