#include "platform/cameras/VirtualCameraCall.h"

namespace Korvex3Sync::cameras {
namespace {

constexpr int kPresentType = 1;
// More than any image has.
constexpr int kImpossibleSize = 5000;

}  // namespace

int VirtualCamera::Serial(std::string& serial) {
    return CallOpen("GetSerialNo", "", kFailed, [&serial](Head& head) {
        serial = head.Description().cameraSerial;
        return kOk;
    });
}

int VirtualCamera::Resolution(int& width, int& height) {
    return CallOpen("GetResolution", "", kFailed, [&](Head& head) {
        const std::shared_ptr<Stream> stream = OpenStream();
        const bool misSized = stream && stream->misSized;
        width = misSized ? kImpossibleSize : head.Description().width;
        height = misSized ? kImpossibleSize : head.Description().height;
        return kOk;
    });
}

int VirtualCamera::ColorMode(int& mode) {
    return CallOpen("GetColorMode", "", kFailed, [&mode](Head& head) {
        mode = head.Description().color ? kColorMode : kMonoMode;
        return kOk;
    });
}

int VirtualCamera::GainRange(int& low, int& high) {
    return CallOpen("GetGainRange", "", kFailed, [&](Head& head) {
        low = head.Description().gainLow;
        high = head.Description().gainHigh;
        return kOk;
    });
}

int VirtualCamera::SetExposure(long microseconds) {
    return CallOpen("SetExposureTime", Arguments(microseconds), kFailed, [=](Head& head) {
        return head.Sensors().SetExposure(microseconds) ? kOk : kFailed;
    });
}

int VirtualCamera::Exposure(long& microseconds) {
    return CallOpen("GetExposureTime", "", kFailed, [&microseconds](Head& head) {
        microseconds = head.Sensors().Exposure();
        return kOk;
    });
}

int VirtualCamera::SetGain(int gain) {
    return CallOpen("SetGain", Arguments(gain), kFailed,
                    [gain](Head& head) { return head.Sensors().SetGain(gain) ? kOk : kFailed; });
}

int VirtualCamera::Gain(int& gain) {
    return CallOpen("GetGain", "", kFailed, [&gain](Head& head) {
        gain = head.Sensors().Gain();
        return kOk;
    });
}

bool VirtualCamera::SetIntParameter(int parameter, int value) {
    return CallOpen("SetCameraIntParam", Arguments(parameter, value), false, [=](Head& head) {
        return parameter == kOrderParameter && head.Sensors().ApplyWord(value);
    });
}

bool VirtualCamera::DeviceType(int& type) {
    return Call("GetDeviceType", "", false, [this, &type](Head& head) {
        if (!Reaches(head, "GetDeviceType")) {
            return false;
        }
        type = kPresentType;
        return true;
    });
}

bool VirtualCamera::ResetState() {
    return Call("ResetCameraState", "", false, [this](Head& head) {
        const std::shared_ptr<Stream> stream = OpenStream();
        if (!stream || !head.GetFaults().ReachCamera(stream->plug, "ResetCameraState")) {
            return false;
        }
        stream->queue->Clear();
        return true;
    });
}

bool VirtualCamera::UnlockOthers() {
    // Instances of the virtual head never lock each other out.
    return Call("UnlockOthers", "", false,
                [this](Head& head) { return Reaches(head, "UnlockOthers"); });
}

}  // namespace Korvex3Sync::cameras
