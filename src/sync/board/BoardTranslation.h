#pragma once

#include <optional>

#include "Korvex3Sync/Types.h"
#include "platform/include/zr3DHandiDLPdev.h"

namespace Korvex3Sync {

// Translation of the public enumerations into those of the board library. Pure functions.

/// Every mode keeps its number, also outside 0 to 3: the board refuses what it does not know.
zr3DHandiDLPdev::LASERWORKMODE ToBoard(LASERWORKMODE mode);
/// Types 0 to 2 keep their numbers; any other switches the projection off.
zr3DHandiDLPdev::PROJECTTYPE ToBoard(PROJECTWORKTYPES type);
/// Swaps 2 and 3, deliberately. Any state outside 1 to 3 is off.
zr3DHandiDLPdev::DISTANCEINDICATE ToBoard(DISTANCESTATUS state);
/// A mode outside 1 to 5, and any mode that is not enabled, is "no trigger".
zr3DHandiDLPdev::MASK_TRIGGER_MODE ToBoard(CAMERA_TRIGGER_MODE mode, bool enable);
/// Nothing for a route outside 0 to 2.
std::optional<zr3DHandiDLPdev::TRIGGERROUTE> ToBoard(CONTROLROUTE route);
/// Nothing for a state outside 1 to 4.
std::optional<zr3DHandiDLPdev::MASK_STROBE_STATE> ToBoard(STROBE_STATE state);

}  // namespace Korvex3Sync
