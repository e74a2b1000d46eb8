#pragma once

#include "Korvex3Sync/Export.h"
#include "Korvex3Sync/Status.h"
#include "Korvex3Sync/Types.h"

namespace Korvex3Sync {

// Operations on the board. Unless a function says otherwise:
//
// - They return 7 for success; 6 for a handle that is not a live connection or a board that is not
//   open; 0 if the board is marked lost (a status poll failed), refuses or does not answer.
// - Any thread, including a status callback, may call them, but a scan callback must not.
// - They block for operations of other threads on the same handle, including a reconnection, and
//   then for the board's answer, at most 500 ms with the included board library.
// - The library remembers what a setter was called with, even if the call failed, and
//   ReconnectDevice writes it back. A call that returned 6 is not remembered.
// - A getter that fails leaves its outputs unchanged.
//
// The library sends numbers unchecked; the firmware of the board decides which ones it accepts.
// korvexctl accepts 0 to 100 for brightness and duty ratios, 0 to 1000000 for work times and 1 to
// 10000 for the trigger period. The virtual board stores any number (docs/board-protocol.md,
// docs/virtual-head.md).

/// Shows a pattern with the projector. A type outside 0 to 2 switches the projection off.
KORVEX3SYNC_API RETSTATUS Project(void* const& handle, const PROJECTWORKTYPES& type);

/// Sets and gets the brightness of the projector, in percent.
KORVEX3SYNC_API RETSTATUS SetProjectorBrightness(void* const& handle, const int& brightness);
KORVEX3SYNC_API RETSTATUS GetProjectorBrightness(void* const& handle, int& brightness);

/// Switches the blue laser lines on or off and selects their work mode.
KORVEX3SYNC_API RETSTATUS EnableBlueLaser(void* const& handle, const LASERWORKMODE& mode,
                                          const bool& enable);

/// Switches the infrared laser on or off.
KORVEX3SYNC_API RETSTATUS EnableIRLaser(void* const& handle, const bool& enable);

/// Sets the level of the infrared laser, 1 to 10 (unchecked, see above). Sent even if the board is
/// marked lost. Direct mode only: returns 4 in service mode.
KORVEX3SYNC_API RETSTATUS SetIRLaserBrightnessLevel(void* const& handle, const int& level);

/// Selects how a strobe output follows the trigger. For a route outside 0 to 2 or a state outside 1
/// to 4 it returns 3 and remembers nothing.
KORVEX3SYNC_API RETSTATUS SetStrobeControlledByTrigger(void* const& handle,
                                                       const CONTROLROUTE& route,
                                                       const STROBE_STATE& state);

/// Sets and gets the three duty ratios of the strobe, in percent: for texture frames, for plain
/// frames, and for plain frames in a mode that also takes texture frames. An argument of -1 keeps
/// the value that was last requested, initially 100.
KORVEX3SYNC_API RETSTATUS SetStrobeDutioRatio(void* const& handle, const int& textureRatio,
                                              const int& ratio, const int& ratioWithTexture);
KORVEX3SYNC_API RETSTATUS GetStrobeDutioRatio(void* const& handle, int& textureRatio, int& ratio,
                                              int& ratioWithTexture);

/// Sets and gets the duty ratio of the laser lines, in percent.
KORVEX3SYNC_API RETSTATUS SetLaserLineDutioRatio(void* const& handle, const int& ratio);
KORVEX3SYNC_API RETSTATUS GetLaserLineDutioRatio(void* const& handle, int& ratio);

/// Sets and gets the duty ratio of the projector, in percent.
KORVEX3SYNC_API RETSTATUS SetProjectDutioRatio(void* const& handle, const int& ratio);
KORVEX3SYNC_API RETSTATUS GetProjectDutioRatio(void* const& handle, int& ratio);

/// Sets and gets the duty ratio of the infrared laser, in percent.
KORVEX3SYNC_API RETSTATUS SetIRLaserDutioRatio(void* const& handle, const int& ratio);
KORVEX3SYNC_API RETSTATUS GetIRLaserDutioRatio(void* const& handle, int& ratio);

// Work times, in microseconds. Direct mode only: these functions return 4 in service mode. The
// setters are sent even if the board is marked lost.

/// Sets the two work times of the strobe, with and without texture, as two commands. If the first
/// fails, the second is not sent.
KORVEX3SYNC_API RETSTATUS SetStrobeWorkTime(void* const& handle, const int& timeWithTexture,
                                            const int& time);
/// Gets the two work times of the strobe, with two commands that are both always sent. Returns 0 if
/// one fails; the output of the other may be set then.
KORVEX3SYNC_API RETSTATUS GetStrobeWorkTime(void* const& handle, int& timeWithTexture, int& time);

/// Sets and gets the work time of the laser lines. The library remembers this value as the work
/// time of the infrared laser: ReconnectDevice writes 1000 for the laser lines, and this value for
/// the infrared laser. Set both again after a reconnection.
KORVEX3SYNC_API RETSTATUS SetLaserLineWorkTime(void* const& handle, const int& time);
KORVEX3SYNC_API RETSTATUS GetLaserLineWorkTime(void* const& handle, int& time);

/// Sets and gets the work time of the projector.
KORVEX3SYNC_API RETSTATUS SetProjectWorkTime(void* const& handle, const int& time);
KORVEX3SYNC_API RETSTATUS GetProjectWorkTime(void* const& handle, int& time);

/// Sets and gets the work time of the infrared laser.
KORVEX3SYNC_API RETSTATUS SetIRLaserWorkTime(void* const& handle, const int& time);
KORVEX3SYNC_API RETSTATUS GetIRLaserWorkTime(void* const& handle, int& time);

/// Sets and gets the time from one trigger to the next, in milliseconds.
KORVEX3SYNC_API RETSTATUS SetVideoTriggerPeriod(void* const& handle, const int& period);
KORVEX3SYNC_API RETSTATUS GetVideoTriggerPeriod(void* const& handle, int& period);

/// Starts the camera trigger in a mode. It stops the trigger if `enable` is false, in any mode, or
/// if the mode is outside 1 to 5. Frames that are still in the cameras arrive after a stop.
KORVEX3SYNC_API RETSTATUS EnableVideoTrigger(void* const& handle, const CAMERA_TRIGGER_MODE& mode,
                                             const bool& enable);

/// Sets the distance LEDs. A state outside 1 to 3 switches them off.
KORVEX3SYNC_API RETSTATUS SetDistanceIndicate(void* const& handle, const DISTANCESTATUS& state);

}  // namespace Korvex3Sync
