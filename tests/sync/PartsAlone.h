#pragma once

#include "camera/PhysicalCameraThreadListener.h"
#include "platform/os/CriticalSection.h"
#include "recorder/Recorder.h"
#include "sync/Head.h"
#include "sync/board/BoardSession.h"
#include "sync/cameras/CameraSet.h"
#include "sync/frames/FramePath.h"

namespace Korvex3Sync::tests {

/// The cameras and the board of a connection without the rest of it.
class CamerasAlone : public PhysicalCameraThreadListener {
public:
    ~CamerasAlone() override { cameras.Close(); }
    /// The recorded head's camera of 8 x 4 pixels, shared by two sensors.
    int Open() {
        SerialList serials{"KV00R1", "KV00R1"};
        return cameras.OpenCameras(serials.Pointers(), {8, 8}, {4, 4});
    }
    void OnThreadNotify(int, int) override {}
    void OnThreadSignal(int) override {}

    os::CriticalSection device;
    FramePath frames{&device};
    BoardSession board{device, frames.Starts()};
    CameraSet cameras{device, *this, frames};
};

}  // namespace Korvex3Sync::tests
