#pragma once

#include "platform/cameras/Camera.h"
#include "platform/os/Event.h"

namespace Korvex3Sync::cameras {

/// An instance of a driver that finds no cameras: it counts none and opens none.
class AbsentCamera : public Camera {
public:
    bool Release() override;
    bool CountDevices(int& total) override;
    bool OpenIndex(int, int, int) override { return false; }
    bool OpenSerial(std::string_view, int, int) override { return false; }
    bool Close() override { return true; }
    bool Start() override { return false; }
    bool Snap(Deadline deadline, unsigned char*& image) override;
    bool Serial(std::string&) override { return false; }
    bool Resolution(int&, int&) override { return false; }
    bool HasColor(bool&) override { return false; }
    bool GainRange(int&, int&) override { return false; }
    bool SelectOrder(int) override { return false; }
    bool SetExposure(long) override { return false; }
    bool Exposure(long&) override { return false; }
    bool SetGain(int) override { return false; }
    bool Gain(int&) override { return false; }
    bool SelectAndSet(int, long, int) override { return false; }
    bool IsPresent() override { return false; }
    bool ResetState() override { return false; }
    bool UnlockOthers() override { return false; }

private:
    os::Event m_released;
};

}  // namespace Korvex3Sync::cameras
