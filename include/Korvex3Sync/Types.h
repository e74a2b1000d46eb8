#pragma once

#include <vector>

namespace Korvex3Sync {

// Only the numbers matter; the names are a convenience. A number without a name is a legal value of
// each type; the functions that take it say what it does.

/// Work mode of the blue laser lines. The board's firmware defines the pattern of each mode.
enum LASERWORKMODE : int {
    LASER_WORK_MODE_0 = 0,
    LASER_WORK_MODE_1 = 1,
    LASER_WORK_MODE_2 = 2,
    LASER_WORK_MODE_3 = 3
};

/// What each trigger of the board delivers.
enum CAMERA_TRIGGER_MODE : int {
    TRIGGER_LASER_LINES = 1,        ///< a mono set under the laser lines
    TRIGGER_PATTERN = 2,            ///< a mono set under the projected pattern
    TRIGGER_PATTERN_COLOR = 3,      ///< mono under the projected pattern, then colour
    TRIGGER_LASER_LINES_COLOR = 4,  ///< mono under the laser lines, then colour
    TRIGGER_SINGLE_COLOR = 5        ///< one colour frame each time the mode is set
};

/// What the projector shows.
enum PROJECTWORKTYPES : int { PROJECT_OFF = 0, PROJECT_PATTERN_1 = 1, PROJECT_PATTERN_2 = 2 };

/// The output of the board that a strobe setting applies to. The firmware defines what each output
/// drives. In the virtual head 0 and 1 are one light ring each, and 2 is both
/// (docs/virtual-head.md).
enum CONTROLROUTE : int { CONTROL_ROUTE_0 = 0, CONTROL_ROUTE_1 = 1, CONTROL_ROUTE_2 = 2 };

/// How a strobe follows the trigger. The firmware defines the states. The virtual head lights mono
/// and colour frames in state 1, mono frames in 2, colour frames in 3, and no frames in 4
/// (docs/virtual-head.md).
enum STROBE_STATE : int {
    STROBE_STATE_1 = 1,
    STROBE_STATE_2 = 2,
    STROBE_STATE_3 = 3,
    STROBE_STATE_4 = 4
};

/// What the distance LEDs show. The library swaps 2 and 3: the board receives 3 for 2, and 2 for 3.
enum DISTANCESTATUS : int {
    DISTANCE_OFF = 0,
    DISTANCE_STATUS_1 = 1,
    DISTANCE_STATUS_2 = 2,
    DISTANCE_STATUS_3 = 3
};

/// Receives one synchronized image set.
///
/// - `context`: the pointer that was given with the callback.
/// - `images`: two mono images (left, right) or these two and a colour image. Each has `width` x
///   `height` bytes (pixels): a mono image is 8-bit grey, a colour image an 8-bit RGGB Bayer
///   mosaic.
/// - `imageInfo`: the channel count of each image.
///
/// In service mode each image has 1280 x 1024 bytes, times the number that `imageInfo` has for it,
/// which is 1 with the included device service. Both callbacks run on one thread of the library.
///
/// The library owns the images, which are valid only during the call: copy what you need, and free
/// nothing. Changes to the vectors have no effect on the library.
///
/// Runs on the grab thread of a camera, which takes no other frame until the callback returns, so
/// return quickly. The callback must not throw; the library logs and drops an exception. It must
/// not call functions of the library except GetScanStatistics and GetStatusDescriptionString:
/// docs/threads.md explains why. After SetScanCallBackFunction has returned, the previous callback
/// is not called again.
using ScanCallBackFunction = void (*)(const void* const& context,
                                      std::vector<unsigned char*>& images, const int& width,
                                      const int& height, std::vector<int>& imageInfo);

/// Receives the two status bytes of the board, about every 200 ms, or 255 and 255 if the board did
/// not answer. `statusA` is the second byte of the board's answer, `statusB` the first; the board
/// defines their meaning. `context` is the pointer that was given with the callback. While
/// ReconnectDevice runs, the board is not polled, except once if a poll was already due.
///
/// Runs on the status thread with the device lock held, so board operations of other threads wait
/// until it returns: return quickly. The callback may call board operations on the same handle, but
/// must not wait for another thread that calls one. docs/threads.md lists what it may call. It must
/// not throw; the library logs and drops an exception.
using StatusCallBackFunction = void (*)(const void* const& context, const unsigned char& statusA,
                                        const unsigned char& statusB);

}  // namespace Korvex3Sync
