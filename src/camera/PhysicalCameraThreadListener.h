#pragma once

namespace Korvex3Sync {

/// The owner of a camera thread. The camera thread stores a pointer to it and calls nothing.
class PhysicalCameraThreadListener {
public:
    virtual ~PhysicalCameraThreadListener() = default;
    virtual void OnThreadNotify(int first, int second) = 0;
    virtual void OnThreadSignal(int value) = 0;
};

}  // namespace Korvex3Sync
