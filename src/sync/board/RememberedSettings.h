#pragma once

#include <array>

#include "platform/include/zr3DHandiDLPdev.h"

namespace Korvex3Sync {

/// The values that the board's setters were last called with, in the numbers of the board library,
/// so that a reconnection can restore them. A setting that was never made has its initial value
/// here.
struct RememberedSettings {
    zr3DHandiDLPdev::TRIGGERROUTE strobeRoute{2};
    zr3DHandiDLPdev::MASK_STROBE_STATE strobeState{1};
    bool blueLaserEnable = false;
    zr3DHandiDLPdev::LASERWORKMODE blueLaserMode{0};
    bool irLaserEnable = false;
    int triggerPeriod = 10;
    int projectorBrightness = 10;
    zr3DHandiDLPdev::MASK_TRIGGER_MODE triggerMode{5};
    zr3DHandiDLPdev::PROJECTTYPE projectType{0};
    std::array<int, 3> strobeDuty{100, 100, 100};  // texture, plain, with texture
    int laserLineDuty = 100;
    int projectorDuty = 100;
    int irLaserDuty = 100;
    zr3DHandiDLPdev::DISTANCEINDICATE distanceState{0};
    int irLaserLevel = 1;
    std::array<int, 2> strobeWorkTime{1000, 1000};  // with texture, without
    int projectorWorkTime = 1000;
    int laserLineWorkTime = 1000;
    int irLaserWorkTime = 1000;
    bool heartbeatEnabled = false;
};

}  // namespace Korvex3Sync
