#include "interface/EveryExport.h"

namespace Korvex3Sync::tests {
namespace {

// One per thread, because several threads call exports at the same time.
thread_local int g_int = 1;
thread_local double g_double = 1.0;
thread_local bool g_bool = true;
thread_local char g_memory[256];
thread_local std::vector<double> g_exposures{1.0, 2.0};
thread_local std::vector<int> g_gains{1, 2};
thread_local ScanStatistics g_statistics;

void OnSet(const void* const&, std::vector<unsigned char*>&, const int&, const int&,
           std::vector<int>&) {}
void OnStatus(const void* const&, const unsigned char&, const unsigned char&) {}

using H = void* const&;
using Images = std::vector<unsigned char*>;

/// Takes a snapshot and frees its images.
RETSTATUS Snapped(const std::function<RETSTATUS(Images&)>& snap) {
    Images images;
    const RETSTATUS status = snap(images);
    for (unsigned char* image : images) {
        delete[] image;
    }
    return status;
}

}  // namespace

const std::vector<Export>& EveryExport() {
    constexpr auto S = Kind::Standard;
    constexpr auto D = Kind::DirectOnly;
    constexpr auto A = Kind::AlwaysDirect;
    constexpr auto R = Kind::Retired;
    static const std::vector<Export> exports{
        {"CloseDeviceCamera", S, [](H h) { return CloseDeviceCamera(h); }},
        {"ReconnectDevice", S, [](H h) { return ReconnectDevice(h); }},
        {"GetConnectCameraCount", S, [](H h) { return GetConnectCameraCount(h, g_int); }},
        {"GetCameraSerialNumber", S,
         [](H h) {
             char* serial = nullptr;
             const RETSTATUS status = GetCameraSerialNumber(h, 0, serial);
             delete[] serial;
             return status;
         }},
        {"GetCameraResolution", S, [](H h) { return GetCameraResolution(h, 0, g_int, g_int); }},
        {"WriteUserInfomation", S, [](H h) { return WriteUserInfomation(h, 0, "a", 1); }},
        {"ReadUserInfomation", S,
         [](H h) {
             char* text = g_memory;
             const RETSTATUS status = ReadUserInfomation(h, 0, text);
             if (text != g_memory) {  // of service mode
                 delete[] text;
             }
             return status;
         }},
        {"EnableHeartbeat", S, [](H h) { return EnableHeartbeat(h, g_bool); }},
        {"Project", S, [](H h) { return Project(h, PROJECT_PATTERN_1); }},
        {"SetProjectorBrightness", S, [](H h) { return SetProjectorBrightness(h, 1); }},
        {"GetProjectorBrightness", S, [](H h) { return GetProjectorBrightness(h, g_int); }},
        {"EnableBlueLaser", S, [](H h) { return EnableBlueLaser(h, LASER_WORK_MODE_1, true); }},
        {"EnableIRLaser", S, [](H h) { return EnableIRLaser(h, true); }},
        {"SetIRLaserBrightnessLevel", D, [](H h) { return SetIRLaserBrightnessLevel(h, 1); }},
        {"SetStrobeControlledByTrigger", S,
         [](H h) { return SetStrobeControlledByTrigger(h, CONTROL_ROUTE_1, STROBE_STATE_1); }},
        {"SetStrobeDutioRatio", S, [](H h) { return SetStrobeDutioRatio(h, 1, 2, 3); }},
        {"GetStrobeDutioRatio", S, [](H h) { return GetStrobeDutioRatio(h, g_int, g_int, g_int); }},
        {"SetLaserLineDutioRatio", S, [](H h) { return SetLaserLineDutioRatio(h, 1); }},
        {"GetLaserLineDutioRatio", S, [](H h) { return GetLaserLineDutioRatio(h, g_int); }},
        {"SetProjectDutioRatio", S, [](H h) { return SetProjectDutioRatio(h, 1); }},
        {"GetProjectDutioRatio", S, [](H h) { return GetProjectDutioRatio(h, g_int); }},
        {"SetIRLaserDutioRatio", S, [](H h) { return SetIRLaserDutioRatio(h, 1); }},
        {"GetIRLaserDutioRatio", S, [](H h) { return GetIRLaserDutioRatio(h, g_int); }},
        {"SetStrobeWorkTime", D, [](H h) { return SetStrobeWorkTime(h, 1, 2); }},
        {"GetStrobeWorkTime", D, [](H h) { return GetStrobeWorkTime(h, g_int, g_int); }},
        {"SetLaserLineWorkTime", D, [](H h) { return SetLaserLineWorkTime(h, 1); }},
        {"GetLaserLineWorkTime", D, [](H h) { return GetLaserLineWorkTime(h, g_int); }},
        {"SetProjectWorkTime", D, [](H h) { return SetProjectWorkTime(h, 1); }},
        {"GetProjectWorkTime", D, [](H h) { return GetProjectWorkTime(h, g_int); }},
        {"SetIRLaserWorkTime", D, [](H h) { return SetIRLaserWorkTime(h, 1); }},
        {"GetIRLaserWorkTime", D, [](H h) { return GetIRLaserWorkTime(h, g_int); }},
        {"SetVideoTriggerPeriod", S, [](H h) { return SetVideoTriggerPeriod(h, 1); }},
        {"GetVideoTriggerPeriod", S, [](H h) { return GetVideoTriggerPeriod(h, g_int); }},
        {"EnableVideoTrigger", S, [](H h) { return EnableVideoTrigger(h, TRIGGER_PATTERN, true); }},
        {"SetDistanceIndicate", S, [](H h) { return SetDistanceIndicate(h, DISTANCE_STATUS_1); }},
        {"SetCameraExposure", R, [](H h) { return SetCameraExposure(h, 0, 1.0); }},
        {"GetCameraExposure", R, [](H h) { return GetCameraExposure(h, 0, g_double); }},
        {"SetCameraGain", R, [](H h) { return SetCameraGain(h, 0, 1); }},
        {"GetCameraGain", R, [](H h) { return GetCameraGain(h, 0, g_int); }},
        {"SetCameraExposureAndGain", S, [](H h) { return SetCameraExposureAndGain(h, 0, 1.0, 1); }},
        {"GetCameraExposureAndGain", S,
         [](H h) { return GetCameraExposureAndGain(h, 0, g_double, g_int); }},
        {"SetScanCallBackFunction", S,
         [](H h) { return SetScanCallBackFunction(h, OnSet, &g_int); }},
        {"SetStatusCallBackFunction", S,
         [](H h) { return SetStatusCallBackFunction(h, OnStatus, &g_int); }},
        {"GetScanStatistics", S, [](H h) { return GetScanStatistics(h, g_statistics); }},
        {"SnapColorImage", S,
         [](H h) {
             double exposure = 1.0;
             int gain = 1;
             return Snapped([&](Images& images) {
                 return SnapColorImage(h, images, g_int, g_int, 0, exposure, gain, CONTROL_ROUTE_1);
             });
         }},
        {"SnapColorImageForIR", A,
         [](H h) {
             return Snapped([h](Images& images) {
                 return SnapColorImageForIR(h, images, g_int, g_int, 0, g_exposures, g_gains,
                                            CONTROL_ROUTE_1);
             });
         }},
    };
    return exports;
}

}  // namespace Korvex3Sync::tests
