#pragma once

#include <array>
#include <cstdint>

#include "platform/include/BoardFacts.h"

namespace Korvex3Sync::virtual_head {

/// The state of the virtual board: what the commands set. Units are those of the board:
/// milliseconds (trigger period), percent (brightness, duty), microseconds (work times).
struct BoardState {
    int strobeRoute = 2;
    int strobeState = 1;
    bool laserEnable = false;
    int laserMode = 0;
    bool irLaserEnable = false;
    int irLaserLevel = 1;
    int triggerPeriod = 10;
    int triggerMode = hardware::trigger_mode::kOff;
    int projectorBrightness = 10;
    int projectType = 0;
    std::array<int, 3> strobeDuty{100, 100, 100};  // texture, plain, with texture
    int laserLineDuty = 100;
    int projectorDuty = 100;
    int irLaserDuty = 100;
    std::array<int, 2> strobeWorkTime{1000, 1000};  // with texture, without
    int laserLineWorkTime = 1000;
    int projectorWorkTime = 1000;
    int irLaserWorkTime = 1000;
    int distanceState = 0;
    bool heartbeat = false;
    std::uint8_t statusFirst = 0;   // first byte of the status query
    std::uint8_t statusSecond = 1;  // second byte of the status query
};

}  // namespace Korvex3Sync::virtual_head
