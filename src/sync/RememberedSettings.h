#pragma once

#include <array>
#include <map>

#include "platform/include/zr3DHandiDLPdev.h"

namespace Korvex3Sync {

/// What the setters were last asked for, so that a reconnection can bring a head back to its state:
/// for the board in its own numbers, where the initial values are what a fresh connection would
/// write; for the cameras by camera order, where nothing is written that was never set.
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
    std::map<int, double> exposures;  // by camera order
    std::map<int, int> gains;         // by camera order
};

}  // namespace Korvex3Sync
