// Goes through the exported operations once, for the recorder that is preloaded into it.

#include <Korvex3Sync/Korvex3Sync.h>

#include <string>
#include <vector>

namespace {

using namespace Korvex3Sync;

void OnSet(const void* const&, std::vector<unsigned char*>&, const int&, const int&,
           std::vector<int>&) {}

void ReadAndWriteLight(void* handle) {
    int a = 0;
    int b = 0;
    int c = 0;
    SetStrobeControlledByTrigger(handle, CONTROL_ROUTE_2, STROBE_STATE_1);
    EnableBlueLaser(handle, LASER_WORK_MODE_1, true);
    EnableIRLaser(handle, true);
    SetIRLaserBrightnessLevel(handle, 4);
    Project(handle, PROJECT_PATTERN_1);
    SetProjectorBrightness(handle, 70);
    GetProjectorBrightness(handle, a);
    SetStrobeDutioRatio(handle, -1, 30, -1);
    GetStrobeDutioRatio(handle, a, b, c);
    SetLaserLineDutioRatio(handle, 41);
    GetLaserLineDutioRatio(handle, a);
    SetProjectDutioRatio(handle, 42);
    GetProjectDutioRatio(handle, a);
    SetIRLaserDutioRatio(handle, 43);
    GetIRLaserDutioRatio(handle, a);
    SetStrobeWorkTime(handle, 501, 502);
    GetStrobeWorkTime(handle, a, b);
    SetLaserLineWorkTime(handle, 503);
    GetLaserLineWorkTime(handle, a);
    SetProjectWorkTime(handle, 504);
    GetProjectWorkTime(handle, a);
    SetIRLaserWorkTime(handle, 505);
    GetIRLaserWorkTime(handle, a);
    SetDistanceIndicate(handle, DISTANCE_STATUS_2);
}

void UseCameras(void* handle) {
    int number = 0;
    double exposure = 0.0;
    char* serial = nullptr;
    GetConnectCameraCount(handle, number);
    GetCameraSerialNumber(handle, 0, serial);
    delete[] serial;
    GetCameraResolution(handle, 1, number, number);
    SetCameraExposureAndGain(handle, 1, 8.5, 3);
    GetCameraExposureAndGain(handle, 1, exposure, number);
    CloseDeviceCamera(handle);
    ReconnectDevice(handle);
}

}  // namespace

int main() {
    std::string version;
    GetFirewareVersion("SN", version);
    bool onU3 = false;
    IsConnectedOnU3("", onU3);
    int count = 0;
    GetCameraCount("KV00", count);
    std::vector<char*> serials;
    std::vector<int> widths;
    std::vector<int> heights;
    std::vector<bool> colors;
    GetCamerasInformation("KV00", serials, widths, heights, colors, count);

    void* handle = nullptr;
    if (ConnectDevice("KV00", "SN", serials, widths, heights, handle) != STATUS_SUCCESS) {
        return 1;
    }
    GetFirewareVersion(handle, nullptr, nullptr, version);
    ReadAndWriteLight(handle);
    char page[256];
    char* memory = page;
    WriteUserInfomation(handle, 3, "abc", 3);
    ReadUserInfomation(handle, 3, memory);
    bool heartbeat = true;
    EnableHeartbeat(handle, heartbeat);
    SetVideoTriggerPeriod(handle, 8);
    GetVideoTriggerPeriod(handle, count);
    SetScanCallBackFunction(handle, OnSet, &count);
    EnableVideoTrigger(handle, TRIGGER_LASER_LINES_COLOR, true);
    EnableVideoTrigger(handle, TRIGGER_LASER_LINES_COLOR, false);
    ReconnectDevice(handle, true, false);
    UseCameras(handle);
    DisConnectDevice(handle);
    for (char* serial : serials) {
        delete[] serial;
    }
    return 0;
}
