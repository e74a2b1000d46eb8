// Sets the light of a head and reads back what the board accepted.

#include <exception>
#include <iostream>

#include "Head.h"

using namespace guide;

namespace {

void SetLight(void* const& head) {
    Require(EnableBlueLaser(head, LASER_WORK_MODE_1, true), "switch the laser lines on");
    Require(SetLaserLineDutioRatio(head, 60), "laser line duty ratio");
    Require(SetStrobeControlledByTrigger(head, CONTROL_ROUTE_2, STROBE_STATE_1), "strobe");
    Require(SetStrobeDutioRatio(head, 80, -1, -1), "strobe duty ratio");  // -1: unchanged
    Require(SetVideoTriggerPeriod(head, 10), "trigger period");
}

void ShowLight(void* const& head) {
    int laser = 0;
    int texture = 0;
    int plain = 0;
    int withTexture = 0;
    int period = 0;
    Require(GetLaserLineDutioRatio(head, laser), "read the laser line duty ratio");
    Require(GetStrobeDutioRatio(head, texture, plain, withTexture), "read the strobe duty ratio");
    Require(GetVideoTriggerPeriod(head, period), "read the trigger period");
    std::cout << "laser lines " << laser << " %, strobe " << texture << " " << plain << " "
              << withTexture << " %, a trigger every " << period << " ms\n";
}

}  // namespace

int main() {
    try {
        const Cameras cameras("KV00");
        const Head head(cameras);
        SetLight(head.Handle());
        ShowLight(head.Handle());
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}
