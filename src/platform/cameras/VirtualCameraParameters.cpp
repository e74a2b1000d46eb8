#include "platform/cameras/VirtualCamera.h"
#include "virtual_head/VirtualHead.h"

namespace Korvex3Sync::cameras {
namespace {

// Larger than any image.
constexpr int kImpossibleSize = 5000;

}  // namespace

bool VirtualCamera::Serial(std::string& serial) {
    const auto reached = Reach("GetSerialNo");
    if (reached) {
        serial = reached->head->Description().cameraSerial;
    }
    return reached.has_value();
}

bool VirtualCamera::Resolution(int& width, int& height) {
    const auto reached = Reach("GetResolution");
    if (reached) {
        const bool misSized = reached->stream->misSized;
        width = misSized ? kImpossibleSize : reached->head->Description().width;
        height = misSized ? kImpossibleSize : reached->head->Description().height;
    }
    return reached.has_value();
}

bool VirtualCamera::HasColor(bool& color) {
    const auto reached = Reach("GetColorMode");
    if (reached) {
        color = reached->head->Description().color;
    }
    return reached.has_value();
}

bool VirtualCamera::GainRange(int& low, int& high) {
    const auto reached = Reach("GetGainRange");
    if (reached) {
        low = reached->head->Description().gainLow;
        high = reached->head->Description().gainHigh;
    }
    return reached.has_value();
}

bool VirtualCamera::SelectOrder(int order) {
    const auto reached = Reach("SetCameraIntParam");
    return reached && reached->head->Sensors().SelectOrder(order);
}

bool VirtualCamera::SetExposure(long microseconds) {
    const auto reached = Reach("SetExposureTime");
    return reached && reached->head->Sensors().SetExposure(microseconds);
}

bool VirtualCamera::Exposure(long& microseconds) {
    const auto reached = Reach("GetExposureTime");
    if (reached) {
        microseconds = reached->head->Sensors().Exposure();
    }
    return reached.has_value();
}

bool VirtualCamera::SetGain(int gain) {
    const auto reached = Reach("SetGain");
    return reached && reached->head->Sensors().SetGain(gain);
}

bool VirtualCamera::Gain(int& gain) {
    const auto reached = Reach("GetGain");
    if (reached) {
        gain = reached->head->Sensors().Gain();
    }
    return reached.has_value();
}

bool VirtualCamera::SelectAndSet(int order, long exposureMicroseconds, int gain) {
    const auto reached = Reach("SetCameraIntParam");
    return reached && reached->head->Sensors().SelectAndSet(order, exposureMicroseconds, gain);
}

bool VirtualCamera::IsPresent() {
    return ReachAny("GetDeviceType");
}

bool VirtualCamera::ResetState() {
    const auto reached = Reach("ResetCameraState");
    if (reached) {
        reached->stream->queue->Clear();
    }
    return reached.has_value();
}

bool VirtualCamera::UnlockOthers() {
    // Instances of the virtual head never lock each other out, so there is nothing to do.
    return ReachAny("UnlockOthers");
}

}  // namespace Korvex3Sync::cameras
