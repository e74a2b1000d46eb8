#pragma once

#include <vector>

namespace Korvex3Sync {

// Callers pass the numbers; the names are a convenience. A number without a name is a legal value
// of each type, and what it does is said at the operation that takes it.

/// Work mode of the blue laser lines; the board's firmware gives the four modes their pattern.
enum LASERWORKMODE : int {
    LASER_WORK_MODE_0 = 0,
    LASER_WORK_MODE_1 = 1,
    LASER_WORK_MODE_2 = 2,
    LASER_WORK_MODE_3 = 3
};

/// What each trigger of the board gives.
enum CAMERA_TRIGGER_MODE : int {
    TRIGGER_LASER_LINES = 1,        ///< a mono set under the laser lines
    TRIGGER_PATTERN = 2,            ///< a mono set under the projected pattern
    TRIGGER_PATTERN_COLOR = 3,      ///< mono under the projected pattern, then colour
    TRIGGER_LASER_LINES_COLOR = 4,  ///< mono under the laser lines, then colour
    TRIGGER_SINGLE_COLOR = 5        ///< one colour frame each time the mode is set
};

/// What the projector shows.
enum PROJECTWORKTYPES : int { PROJECT_OFF = 0, PROJECT_PATTERN_1 = 1, PROJECT_PATTERN_2 = 2 };

/// Which output of the board a strobe setting applies to. What hangs on each is the firmware's; in
/// the virtual head 0 and 1 are one ring of lights each, 2 both (docs/virtual-head.md).
enum CONTROLROUTE : int { CONTROL_ROUTE_0 = 0, CONTROL_ROUTE_1 = 1, CONTROL_ROUTE_2 = 2 };

/// How a strobe follows the trigger. What the states mean is the firmware's; the virtual head
/// lights mono and colour frames in 1, mono in 2, colour in 3, none in 4 (docs/virtual-head.md).
enum STROBE_STATE : int {
    STROBE_STATE_1 = 1,
    STROBE_STATE_2 = 2,
    STROBE_STATE_3 = 3,
    STROBE_STATE_4 = 4
};

/// What the distance LEDs show. Values 2 and 3 are crossed over on their way to the board.
enum DISTANCESTATUS : int {
    DISTANCE_OFF = 0,
    DISTANCE_STATUS_1 = 1,
    DISTANCE_STATUS_2 = 2,
    DISTANCE_STATUS_3 = 3
};

/// Receives one synchronized image set.
///
/// `context` is the pointer given with the callback. `images` holds two mono images (left, right)
/// or these two and a colour image, each of `width` x `height` bytes: mono is 8-bit grey, colour an
/// 8-bit RGGB Bayer mosaic. `imageInfo` holds the channel count of each image. The buffers belong
/// to the library and are valid during the call only: copy what is to be kept, free nothing.
///
/// Called on the grab thread of a camera, which can take no other frame meanwhile: return promptly.
/// The callback must not throw (what it throws is logged and dropped), must not call an operation
/// on the same handle (docs/threads.md says why), and is never called again once
/// SetScanCallBackFunction has replaced it and returned.
using ScanCallBackFunction = void (*)(const void* const& context,
                                      std::vector<unsigned char*>& images, const int& width,
                                      const int& height, std::vector<int>& imageInfo);

/// Receives the two status bytes of the board, about every 200 ms; 255 and 255 when the board did
/// not answer. `statusA` is the second byte of the board's answer and `statusB` the first. While
/// ReconnectDevice runs the board is not polled, but for a poll that was due when it began.
///
/// Called on the status thread of the connection, with its board lock held: return promptly, other
/// threads' board operations wait meanwhile. Board operations on the same handle may be called in
/// it; waiting for another thread that does one may not (docs/threads.md). Must not throw.
using StatusCallBackFunction = void (*)(const void* const& context, const unsigned char& statusA,
                                        const unsigned char& statusB);

}  // namespace Korvex3Sync
