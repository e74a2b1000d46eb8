#pragma once

#include "Korvex3Sync/Export.h"
#include "Korvex3Sync/Status.h"

namespace Korvex3Sync {

// The cameras of a connection. The operations that are not retired: return 6 for a null handle;
// may be called from any thread, also from a status callback, but not from a scan callback; wait
// for operations of other threads on the same handle, a reconnection included, and then block for
// the camera's answer and for the times given below. GetConnectCameraCount waits for nothing. They
// look neither at the board nor at whether it is marked lost. Where 7 is promised whatever the
// camera does, 0 is still the answer when memory ran out.
//
// All of them reach the first camera. A camera index is the position of a sensor in the head, 0 to
// 3; it selects whose exposure and gain that camera takes or gives.

/// Number of cameras that were opened; a camera that several sensors share counts once. Cameras
/// that were closed with CloseDeviceCamera count too. Returns 7.
KORVEX3SYNC_API RETSTATUS GetConnectCameraCount(void* const& handle, int& count);

/// Serial of the first camera. `cameraIndex` counts the entries of the list that the head was
/// connected with, from 0. `serial` must be null on entry and receives a zero-terminated `new[]`
/// buffer that the caller frees with `delete[]`; the text is empty when the camera does not answer.
///
/// Returns 7; 6 for an index outside the list or a `serial` that is not null, which is left alone.
KORVEX3SYNC_API RETSTATUS GetCameraSerialNumber(void* const& handle, const int& cameraIndex,
                                                char*& serial);

/// Size of one image in pixels. `cameraIndex` as for GetCameraSerialNumber.
///
/// Returns 7, also when the camera does not answer: `width` and `height` are left alone then, so
/// give them a value that is no size. 6 for an index outside the list, which leaves them alone too.
KORVEX3SYNC_API RETSTATUS GetCameraResolution(void* const& handle, const int& cameraIndex,
                                              int& width, int& height);

/// Sets exposure and gain of one camera index. `exposure` is in milliseconds and goes out in whole
/// tenths, cut down: 0.1 to 25.5 are set as they are. The camera is sent the tenths modulo 256, so
/// 25.6 changes nothing and 30 sets 4.4. `gain` is in the camera's gain steps, 0 to 63 (modulo 64);
/// a camera may refuse a part of these, and ours takes 0.1 to 0.3 ms with gain 0 at index 0 for the
/// mere choice of an index. Of `cameraIndex` the two lowest bits count.
///
/// What was asked for is remembered as it was given, and written back by ReconnectDevice.
///
/// Returns 7, also when the camera refuses, which is logged after a second try 20 ms later: read
/// back what matters.
KORVEX3SYNC_API RETSTATUS SetCameraExposureAndGain(void* const& handle, const int& cameraIndex,
                                                   const double& exposure, const int& gain);

/// Reads exposure (milliseconds) and gain (gain steps) of one camera index. Blocks for 40 ms.
///
/// Returns 7, also when the camera does not answer: `exposure` is 0 then, and `gain` is left alone.
KORVEX3SYNC_API RETSTATUS GetCameraExposureAndGain(void* const& handle, const int& cameraIndex,
                                                   double& exposure, int& gain);

// Retired: they always return 5, look at nothing and touch nothing. Use the combined operations.

KORVEX3SYNC_API RETSTATUS SetCameraExposure(void* const& handle, const int& cameraIndex,
                                            const double& exposure);
KORVEX3SYNC_API RETSTATUS GetCameraExposure(void* const& handle, const int& cameraIndex,
                                            double& exposure);
KORVEX3SYNC_API RETSTATUS SetCameraGain(void* const& handle, const int& cameraIndex,
                                        const int& gain);
KORVEX3SYNC_API RETSTATUS GetCameraGain(void* const& handle, const int& cameraIndex, int& gain);

}  // namespace Korvex3Sync
