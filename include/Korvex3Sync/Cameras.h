#pragma once

#include "Korvex3Sync/Export.h"
#include "Korvex3Sync/Status.h"

namespace Korvex3Sync {

// Operations on the cameras of a connection. For all of them except the retired ones:
//
// - They return 6 for a handle that is not a live connection.
// - Any thread, including a status callback, may call them, but a scan callback must not.
// - They wait until operations of other threads on the same handle have finished, including a
//   reconnection. Then they block for the camera's answer and for the times given below.
// - They work whether or not the board is open or marked lost.
// - They return 0 if memory runs out, even where the comment says that they always return 7.
//
// All of them use the first camera of the connection. Exposure and gain belong to one sensor, which
// is selected by its position in the head, 0 to 3.

/// Gets the number of opened cameras. A camera that several sensors share counts once. Cameras that
/// were closed with CloseDeviceCamera are included. Returns 7. Does not block.
KORVEX3SYNC_API RETSTATUS GetConnectCameraCount(void* const& handle, int& count);

/// Gets the serial of the first camera. `cameraIndex` is an index, from 0, into the camera list
/// that was given to ConnectDevice. `serial` must be null on entry. It receives a zero-terminated
/// buffer, which the caller frees with `delete[]`. The text is empty if the camera does not answer.
///
/// Returns 7; 6 if the index is outside the list or `serial` is not null, and then leaves `serial`
/// unchanged.
KORVEX3SYNC_API RETSTATUS GetCameraSerialNumber(void* const& handle, const int& cameraIndex,
                                                char*& serial);

/// Gets the size of one image in pixels. `cameraIndex` is the same as for GetCameraSerialNumber.
///
/// Returns 7, even if the camera does not answer; 6 if the index is outside the list. In both cases
/// `width` and `height` stay unchanged, so set them to 0 before the call.
KORVEX3SYNC_API RETSTATUS GetCameraResolution(void* const& handle, const int& cameraIndex,
                                              int& width, int& height);

/// Sets exposure and gain of one sensor.
///
/// - `cameraIndex`: the sensor, 0 to 3. Only the two lowest bits are used.
/// - `exposure`: milliseconds, 0.1 to 25.5, truncated to tenths. The camera receives the tenths
///   modulo 256: 30 sets 4.4, and 25.6 changes nothing.
/// - `gain`: gain steps of the camera, 0 to 63 (modulo 64).
///
/// A camera may support a smaller range. The included camera library changes nothing for sensor 0
/// with 0.1 to 0.3 ms and gain 0: the protocol uses these values to select a sensor.
///
/// The library remembers the values as given, and ReconnectDevice writes them back.
///
/// Returns 7, even if the camera refuses: read the values back to be sure. After a refusal the
/// library logs it and tries once more, 20 ms later.
KORVEX3SYNC_API RETSTATUS SetCameraExposureAndGain(void* const& handle, const int& cameraIndex,
                                                   const double& exposure, const int& gain);

/// Gets the exposure (milliseconds) and the gain (gain steps) of one sensor. `cameraIndex` is the
/// same as for SetCameraExposureAndGain. Blocks for 40 ms.
///
/// Returns 7, even if the camera does not answer. Then `exposure` is 0 and `gain` stays unchanged.
KORVEX3SYNC_API RETSTATUS GetCameraExposureAndGain(void* const& handle, const int& cameraIndex,
                                                   double& exposure, int& gain);

// Retired: these functions ignore their arguments and always return 5. Use the functions above,
// which handle exposure and gain together.

KORVEX3SYNC_API RETSTATUS SetCameraExposure(void* const& handle, const int& cameraIndex,
                                            const double& exposure);
KORVEX3SYNC_API RETSTATUS GetCameraExposure(void* const& handle, const int& cameraIndex,
                                            double& exposure);
KORVEX3SYNC_API RETSTATUS SetCameraGain(void* const& handle, const int& cameraIndex,
                                        const int& gain);
KORVEX3SYNC_API RETSTATUS GetCameraGain(void* const& handle, const int& cameraIndex, int& gain);

}  // namespace Korvex3Sync
