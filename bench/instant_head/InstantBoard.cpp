// A board that takes every command at once.

#include <cstring>

#include "platform/include/zr3DHandiDLPdev.h"

namespace zr3DHandiDLPdev {
namespace {

constexpr std::size_t kPageBytes = 256;

bool Answer(void* handle, int& value) {
    value = 0;
    return handle != nullptr;
}

}  // namespace

bool zr3DInitHidDev(void*& handle, const char*, const char*, const char*) {
    static char board = 0;
    handle = &board;
    return true;
}

bool zr3DExitHidDev(void*& handle) {
    const bool open = handle != nullptr;
    handle = nullptr;
    return open;
}

bool zr3DQueryFirmwareVersionFast(const char*, std::string& version) {
    version = "1.0.0";
    return true;
}

bool zr3DQueryProjectorFirewareVersion(void* handle, std::string& version) {
    version = "1.0.0";
    return handle != nullptr;
}

bool zr3DResetDevice(void* handle) {
    return handle != nullptr;
}

bool zr3DResetFPGA(void* handle) {
    return handle != nullptr;
}

bool zr3DQueryCurrentStatus(void* handle, unsigned char& first, unsigned char& second) {
    first = 0;
    second = 0;
    return handle != nullptr;
}

bool zr3DEnableHeartbeat(void* handle, bool) {
    return handle != nullptr;
}

bool zr3DOpenOrCloseStrobeFlicker(void* handle, TRIGGERROUTE, MASK_STROBE_STATE) {
    return handle != nullptr;
}

bool zr3DSetLaserEnable(void* handle, bool, LASERWORKMODE) {
    return handle != nullptr;
}

bool zr3DSetIRLaserEnable(void* handle, bool) {
    return handle != nullptr;
}

bool zr3DSetIRLaserLevel(void* handle, int) {
    return handle != nullptr;
}

bool zr3DSetVideoTriggerPeriod(void* handle, int) {
    return handle != nullptr;
}

bool zr3DQueryTriggerPeriod(void* handle, int& period) {
    return Answer(handle, period);
}

bool zr3DSetProjectorBrightness(void* handle, int) {
    return handle != nullptr;
}

bool zr3DQueryProjectorBrightness(void* handle, int& brightness) {
    return Answer(handle, brightness);
}

bool zr3DSetVideoTrigleMode(void* handle, MASK_TRIGGER_MODE) {
    return handle != nullptr;
}

bool zr3DProject(void* handle, PROJECTTYPE) {
    return handle != nullptr;
}

bool zr3DSetLedDutioRatio(void* handle, int, int, int, int) {
    return handle != nullptr;
}

bool zr3DQueryLedDutioRatio(void* handle, int, int& texture, int& ratio, int& ratioWithTexture) {
    return Answer(handle, texture) && Answer(handle, ratio) && Answer(handle, ratioWithTexture);
}

bool zr3DSetDutioRatio(void* handle, int, int) {
    return handle != nullptr;
}

bool zr3DQueryDutioRatio(void* handle, int, int& ratio) {
    return Answer(handle, ratio);
}

bool zr3DSetLedWorkTime(void* handle, bool, int) {
    return handle != nullptr;
}

bool zr3DQueryLedWorkTime(void* handle, bool, int& time) {
    return Answer(handle, time);
}

bool zr3DSetWorkTime(void* handle, int, int) {
    return handle != nullptr;
}

bool zr3DQueryWorkTime(void* handle, int, int& time) {
    return Answer(handle, time);
}

bool zr3DSetDistanceIndicateState(void* handle, DISTANCEINDICATE) {
    return handle != nullptr;
}

bool zr3DWriteUserInfomation(void* handle, int, const char*, int) {
    return handle != nullptr;
}

bool zr3DReadUserInfomation(void* handle, int, char*& buffer) {
    if (handle == nullptr || buffer == nullptr) {
        return false;
    }
    std::memset(buffer, 0, kPageBytes);
    return true;
}

}  // namespace zr3DHandiDLPdev
