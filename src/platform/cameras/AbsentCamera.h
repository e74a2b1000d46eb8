#pragma once

#include "platform/cameras/Camera.h"
#include "platform/os/Event.h"

namespace Korvex3Sync::cameras {

/// The instance of a maker whose driver finds nothing: it counts no device and opens none.
class AbsentCamera : public Camera {
public:
    int Release() override;
    int DeviceTotal(int& total) override;
    int OpenIndex(int, int, int) override { return kFailed; }
    int OpenSerial(std::string_view, int, int) override { return kFailed; }
    int Close() override { return kOk; }
    int Start(double) override { return kFailed; }
    int Snap(unsigned char*& image) override;
    int Serial(std::string&) override { return kFailed; }
    int Resolution(int&, int&) override { return kFailed; }
    int ColorMode(int&) override { return kFailed; }
    int GainRange(int&, int&) override { return kFailed; }
    int SetExposure(long) override { return kFailed; }
    int Exposure(long&) override { return kFailed; }
    int SetGain(int) override { return kFailed; }
    int Gain(int&) override { return kFailed; }
    bool SetIntParameter(int, int) override { return false; }
    bool DeviceType(int&) override { return false; }
    bool ResetState() override { return false; }
    bool UnlockOthers() override { return false; }

private:
    os::Event m_released;
};

}  // namespace Korvex3Sync::cameras
