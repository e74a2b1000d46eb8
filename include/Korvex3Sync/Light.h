#pragma once

#include "Korvex3Sync/Export.h"
#include "Korvex3Sync/Status.h"
#include "Korvex3Sync/Types.h"

namespace Korvex3Sync {

// Operations on the board. All of them: return 7 for success, 6 for a null handle or a board that
// is not open, 0 when the board is marked lost (a status poll failed) or refuses; may be called
// from any thread, also from a status callback, but not from a scan callback; block for the board's
// answer, for the board operation of another thread and for a running reconnection. What a setter
// was asked for is remembered, also when it failed (but not when it was answered 6), and written
// back by ReconnectDevice. Outputs of getters stay as they are on failure, but for
// GetStrobeWorkTime.
//
// Numbers go to the board as they are, and its firmware decides what it takes. korvexctl accepts 0
// to 100 for brightness and duty ratios, 0 to 1000000 for work times and 1 to 10000 for the trigger
// period; the virtual board stores every number (docs/board-protocol.md, docs/virtual-head.md).

/// Shows a projector pattern; a type outside 0..2 switches the projection off.
KORVEX3SYNC_API RETSTATUS Project(void* const& handle, const PROJECTWORKTYPES& type);

/// Projector brightness in percent.
KORVEX3SYNC_API RETSTATUS SetProjectorBrightness(void* const& handle, const int& brightness);
KORVEX3SYNC_API RETSTATUS GetProjectorBrightness(void* const& handle, int& brightness);

/// Switches the blue laser lines and chooses their work mode.
KORVEX3SYNC_API RETSTATUS EnableBlueLaser(void* const& handle, const LASERWORKMODE& mode,
                                          const bool& enable);

/// Switches the infrared laser.
KORVEX3SYNC_API RETSTATUS EnableIRLaser(void* const& handle, const bool& enable);

/// Infrared laser level, 1 to 10 (unchecked, see above). Direct mode only (4 in service mode); sent
/// also to a board that is marked lost.
KORVEX3SYNC_API RETSTATUS SetIRLaserBrightnessLevel(void* const& handle, const int& level);

/// Couples a strobe output to the trigger. A route outside 0..2 or a state outside 1..4 is refused
/// with 3 and not remembered.
KORVEX3SYNC_API RETSTATUS SetStrobeControlledByTrigger(void* const& handle,
                                                       const CONTROLROUTE& route,
                                                       const STROBE_STATE& state);

/// Strobe duty ratios in percent: texture frames, plain frames, plain frames beside texture frames.
/// An argument of -1 keeps the value last asked for (100 at first).
KORVEX3SYNC_API RETSTATUS SetStrobeDutioRatio(void* const& handle, const int& textureRatio,
                                              const int& ratio, const int& ratioWithTexture);
KORVEX3SYNC_API RETSTATUS GetStrobeDutioRatio(void* const& handle, int& textureRatio, int& ratio,
                                              int& ratioWithTexture);

/// Laser line duty ratio in percent.
KORVEX3SYNC_API RETSTATUS SetLaserLineDutioRatio(void* const& handle, const int& ratio);
KORVEX3SYNC_API RETSTATUS GetLaserLineDutioRatio(void* const& handle, int& ratio);

/// Projector duty ratio in percent.
KORVEX3SYNC_API RETSTATUS SetProjectDutioRatio(void* const& handle, const int& ratio);
KORVEX3SYNC_API RETSTATUS GetProjectDutioRatio(void* const& handle, int& ratio);

/// Infrared laser duty ratio in percent.
KORVEX3SYNC_API RETSTATUS SetIRLaserDutioRatio(void* const& handle, const int& ratio);
KORVEX3SYNC_API RETSTATUS GetIRLaserDutioRatio(void* const& handle, int& ratio);

// Work times in microseconds. Direct mode only (4 in service mode). The setters are sent also to a
// board that is marked lost.

/// Strobe work times with and without texture. The second is not sent when the first is refused.
KORVEX3SYNC_API RETSTATUS SetStrobeWorkTime(void* const& handle, const int& timeWithTexture,
                                            const int& time);
/// Both are asked for; 0 when either query fails: the output of the other may be written then.
KORVEX3SYNC_API RETSTATUS GetStrobeWorkTime(void* const& handle, int& timeWithTexture, int& time);

/// Laser line work time. It is remembered as the infrared laser's, so ReconnectDevice writes 1000
/// back for the laser lines and this value for the infrared laser.
KORVEX3SYNC_API RETSTATUS SetLaserLineWorkTime(void* const& handle, const int& time);
KORVEX3SYNC_API RETSTATUS GetLaserLineWorkTime(void* const& handle, int& time);

/// Projector work time.
KORVEX3SYNC_API RETSTATUS SetProjectWorkTime(void* const& handle, const int& time);
KORVEX3SYNC_API RETSTATUS GetProjectWorkTime(void* const& handle, int& time);

/// Infrared laser work time.
KORVEX3SYNC_API RETSTATUS SetIRLaserWorkTime(void* const& handle, const int& time);
KORVEX3SYNC_API RETSTATUS GetIRLaserWorkTime(void* const& handle, int& time);

/// Time from trigger to trigger in milliseconds.
KORVEX3SYNC_API RETSTATUS SetVideoTriggerPeriod(void* const& handle, const int& period);
KORVEX3SYNC_API RETSTATUS GetVideoTriggerPeriod(void* const& handle, int& period);

/// Starts the camera trigger in a mode, or stops it (`enable` false, whatever the mode). A mode
/// outside 1..5 stops it too.
KORVEX3SYNC_API RETSTATUS EnableVideoTrigger(void* const& handle, const CAMERA_TRIGGER_MODE& mode,
                                             const bool& enable);

/// Sets the distance LEDs; a state outside 1..3 switches them off.
KORVEX3SYNC_API RETSTATUS SetDistanceIndicate(void* const& handle, const DISTANCESTATUS& state);

}  // namespace Korvex3Sync
