#pragma once

#include <Korvex3Sync/Types.h>

#include <array>

namespace Korvex3Sync::korvexctl {

/// A trigger mode that gives image sets.
struct TriggerMode {
    const char* name;
    CAMERA_TRIGGER_MODE mode;
    bool pattern;  // the light is the projector's pattern, else the laser lines
    bool color;    // each set has a colour image
};

/// All of them; TRIGGER_SINGLE_COLOR gives single colour frames, no sets.
inline constexpr std::array kTriggerModes{
    TriggerMode{"laser", TRIGGER_LASER_LINES, false, false},
    TriggerMode{"pattern", TRIGGER_PATTERN, true, false},
    TriggerMode{"pattern-color", TRIGGER_PATTERN_COLOR, true, true},
    TriggerMode{"laser-color", TRIGGER_LASER_LINES_COLOR, false, true},
};

}  // namespace Korvex3Sync::korvexctl
