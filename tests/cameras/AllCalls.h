#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/include/zr3DCamera.h"

namespace Korvex3Sync::tests {

/// One function of the camera library with plausible arguments; true when the call succeeds.
struct CameraCall {
    const char* name;
    std::function<bool(void* handle)> succeeds;
};

/// Every function that takes a handle, except ReleaseCamera. Their outputs are discarded.
inline std::vector<CameraCall> CallsOnAHandle() {
    using namespace zr3DCamera;
    return {
        {"GetDeviceTotal",
         [](void* h) {
             int n = 0;
             return GetDeviceTotal(h, n) == 0;
         }},
        {"OpenCamera", [](void* h) { return OpenCamera(h, 0, 0, 0) == 0; }},
        {"CloseCamera", [](void* h) { return CloseCamera(h) == 0; }},
        {"OpenCamera", [](void* h) { return OpenCamera(h, "KV00A1001", 0, 0) == 0; }},
        {"StartCamera", [](void* h) { return StartCamera(h, 0.0) == 0; }},
        {"GetSerialNo",
         [](void* h) {
             std::string s;
             return GetSerialNo(h, s) == 0;
         }},
        {"GetResolution",
         [](void* h) {
             int x = 0;
             int y = 0;
             return GetResolution(h, x, y) == 0;
         }},
        {"GetColorMode",
         [](void* h) {
             ZR_IMG_FORMAT m{};
             return GetColorMode(h, m) == 0;
         }},
        {"GetGainRange",
         [](void* h) {
             int l = 0;
             int u = 0;
             return GetGainRange(h, l, u) == 0;
         }},
        {"SetExposureTime", [](void* h) { return SetExposureTime(h, 1000) == 0; }},
        {"GetExposureTime",
         [](void* h) {
             long t = 0;
             return GetExposureTime(h, t) == 0;
         }},
        {"SetGain", [](void* h) { return SetGain(h, 1) == 0; }},
        {"GetGain",
         [](void* h) {
             int g = 0;
             return GetGain(h, g) == 0;
         }},
        {"SetCameraIntParam", [](void* h) { return SetCameraIntParam(h, CAMPARAM{5}, 1); }},
        {"GetDeviceType",
         [](void* h) {
             int t = 0;
             return GetDeviceType(h, t);
         }},
        {"ResetCameraState", [](void* h) { return ResetCameraState(h); }},
        {"UnlockOthers", [](void* h) { return UnlockOthers(h); }},
    };
}

}  // namespace Korvex3Sync::tests
