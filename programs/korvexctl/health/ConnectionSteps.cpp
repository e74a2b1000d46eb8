#include <Korvex3Sync/Cameras.h>
#include <Korvex3Sync/Connection.h>
#include <Korvex3Sync/Discovery.h>

#include <memory>

#include "korvexctl/health/Examined.h"
#include "korvexctl/health/Selftest.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::chrono::seconds kConnectionStepLimit{15};
constexpr std::chrono::seconds kConnectLimit{30};
constexpr std::chrono::seconds kPollLimit{5};

Finding TestDiscovery(Examined& examined) {
    examined.cameras = FindCameras(examined.choice.cameraType);
    int count = 0;
    const RETSTATUS status = GetCameraCount(examined.choice.cameraType.c_str(), count);
    if (status != STATUS_SUCCESS) {
        return {Verdict::Fault, "cannot count the cameras: " + StatusText(status)};
    }
    if (examined.cameras.empty()) {
        return {Verdict::Fault, NoCameraMessage(examined.choice.cameraType)};
    }
    if (count != static_cast<int>(examined.cameras.size())) {
        return {Verdict::Fault, std::to_string(count) + " cameras counted, " +
                                    std::to_string(examined.cameras.size()) + " listed"};
    }
    return {Verdict::Ok, std::to_string(count) + " cameras counted and listed"};
}

Finding TestUsb() {
    bool onUsb3 = false;
    const RETSTATUS status = IsConnectedOnU3("", onUsb3);
    if (status != STATUS_SUCCESS) {
        return {Verdict::Fault, "the board is not found on USB: " + StatusText(status)};
    }
    return {Verdict::Ok, onUsb3 ? "found, at USB 3 speed" : "found, not at USB 3 speed"};
}

Finding TestFirmware(const Examined& examined) {
    std::string version;
    const RETSTATUS status = GetFirewareVersion(examined.choice.board.c_str(), version);
    if (status != STATUS_SUCCESS) {
        return {Verdict::Fault, "without a connection: " + StatusText(status)};
    }
    return {Verdict::Ok, version};
}

Finding Connect(Examined& examined) {
    if (examined.cameras.empty()) {
        return {Verdict::NotRun, "no camera"};
    }
    examined.head.emplace(examined.choice, examined.cameras, MuteBoard::Taken);
    return {Verdict::Ok, "board and cameras open"};
}

Finding KeepSettings(Examined& examined) {
    examined.found.emplace(examined.head->Handle(), examined.cameras.size());
    return {Verdict::Ok, std::to_string(examined.found->Kept()) + " settings read"};
}

/// What the library reports differently from discovery about a camera; empty if nothing.
std::string Differs(void* const& handle, int index, const Camera& camera) {
    char* text = nullptr;
    const RETSTATUS status = GetCameraSerialNumber(handle, index, text);
    const std::unique_ptr<char[]> owned(text);
    const std::string entry = "camera " + std::to_string(index) + ": ";
    if (status != STATUS_SUCCESS || text == nullptr) {
        return entry + "no serial: " + StatusText(status);
    }
    if (camera.serial != text) {
        return entry + "serial " + text + " instead of " + camera.serial;
    }
    int width = -1;
    int height = -1;
    const RETSTATUS size = GetCameraResolution(handle, index, width, height);
    if (size != STATUS_SUCCESS) {
        return entry + "no size: " + StatusText(size);
    }
    return width == camera.width && height == camera.height
               ? ""
               : entry + "size " + std::to_string(width) + " x " + std::to_string(height);
}

Finding TestCameraInformation(const Examined& examined) {
    void* const& handle = examined.head->Handle();
    int count = 0;
    const RETSTATUS status = GetConnectCameraCount(handle, count);
    if (status != STATUS_SUCCESS || count < 1) {
        return {Verdict::Fault,
                std::to_string(count) + " cameras connected: " + StatusText(status)};
    }
    for (std::size_t i = 0; i < examined.cameras.size(); ++i) {
        const std::string wrong = Differs(handle, static_cast<int>(i), examined.cameras[i]);
        if (!wrong.empty()) {
            return {Verdict::Fault, wrong};
        }
    }
    return {Verdict::Ok, "serials and sizes as listed"};
}

Finding TestStatus(Examined& examined) {
    examined.watch.Watch(examined.head->session);
    examined.answers = examined.WaitForAnswer(kPollLimit);
    return examined.answers ? Finding{Verdict::Ok, "the board answers its poll"}
                            : Finding{Verdict::Fault, "the board does not answer its status poll"};
}

}  // namespace

std::vector<Step> ConnectionSteps(const std::shared_ptr<Examined>& examined) {
    return {{"discovery", kConnectLimit, [examined] { return TestDiscovery(*examined); }},
            {"USB", kConnectionStepLimit, TestUsb},
            {"firmware", kConnectionStepLimit, [examined] { return TestFirmware(*examined); }},
            {"connect", kConnectLimit, [examined] { return Connect(*examined); }},
            HeadStep(examined, "read settings", kConnectLimit, KeepSettings),
            HeadStep(examined, "camera information", kConnectionStepLimit, TestCameraInformation)};
}

Step StatusStep(const std::shared_ptr<Examined>& examined) {
    return HeadStep(examined, "status", kConnectionStepLimit, TestStatus);
}

}  // namespace Korvex3Sync::korvexctl
