// Sets exposure and gain and reads back what the camera accepted.

#include <cmath>
#include <exception>
#include <iostream>

#include "Head.h"

using namespace guide;

namespace {

constexpr int kLeft = 0;  // the position of a sensor in the head, 0 to 3

/// Sets and reads back: the setter returns 7 even if the camera refuses.
bool SetExposure(void* const& head, int sensor, double milliseconds, int gain) {
    if (SetCameraExposureAndGain(head, sensor, milliseconds, gain) != STATUS_SUCCESS) {
        return false;
    }
    double setMilliseconds = 0;
    int setGain = -1;
    if (GetCameraExposureAndGain(head, sensor, setMilliseconds, setGain) != STATUS_SUCCESS) {
        return false;
    }
    std::cout << "exposure " << setMilliseconds << " ms, gain " << setGain << '\n';
    return std::abs(setMilliseconds - milliseconds) < 0.1 && setGain == gain;
}

}  // namespace

int main() {
    try {
        const Cameras cameras("KV00");
        const Head head(cameras);
        if (!SetExposure(head.Handle(), kLeft, 8.5, 3)) {
            throw std::runtime_error("the camera did not take the exposure");
        }
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}
