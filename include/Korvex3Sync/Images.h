#pragma once

#include <vector>

#include "Korvex3Sync/Export.h"
#include "Korvex3Sync/Status.h"
#include "Korvex3Sync/Types.h"

namespace Korvex3Sync {

/// Sets the scan callback and the pointer that is passed to it; a null callback removes it. After
/// this function has returned, the previous callback is not called again.
///
/// The library keeps `context` until the callback is replaced or the connection ends; the caller
/// owns what it points to.
///
/// Returns 7; 6 for a handle that is not a live connection. Any thread, but not from a callback.
/// Blocks while a frame is being handled, including its scan callback.
KORVEX3SYNC_API RETSTATUS SetScanCallBackFunction(void* const& handle,
                                                  ScanCallBackFunction callback, void* context);

/// Sets the status callback and the pointer that is passed to it; a null callback removes it.
///
/// The first call on a handle starts the status thread and switches the board's heartbeat on. Later
/// calls switch the heartbeat off if `callback` or `context` is null, and on otherwise. After each
/// call, the next four polls (about 0.8 s) do not call the callback.
///
/// The status thread polls the board only while a callback is set. Only a poll can mark the board
/// as lost, and only a good poll can clear that mark.
///
/// Returns 7, even if the board refuses the heartbeat; 6 for a handle that is not a live
/// connection; 0 if the thread cannot be started. Any thread, including a status callback, but not
/// from a scan callback. Blocks while a status callback runs, for operations of other threads and
/// for the board's answer.
KORVEX3SYNC_API RETSTATUS SetStatusCallBackFunction(void* const& handle,
                                                    StatusCallBackFunction callback, void* context);

/// Takes two colour images outside a scan. It ends a running scan: it stops the trigger and uses
/// all colour frames that arrive until it returns.
///
/// - The first image is taken with the strobe output `route` in state 3 and the current exposure.
/// - The second image is taken with the strobe in state 1, and with `exposure` (milliseconds) and
///   `gain` for the sensor `cameraIndex`, as for SetCameraExposureAndGain. The arguments are only
///   read.
/// - If `route` is outside 0 to 2, the strobe is not switched.
///
/// The images are appended to `images`. Each is a `new[]` array that the caller frees with
/// `delete[]`, also after DisConnectDevice. It holds an 8-bit RGGB Bayer mosaic **of the size of
/// the camera**, which GetCameraResolution returns. `width` and `height` always receive 1280 and
/// 1024, whatever that size is. The second image may be null.
///
/// Afterwards, even after a failure, the trigger is in mode TRIGGER_SINGLE_COLOR, the strobe is in
/// state 1 (or 3, if the first frame did not arrive), and exposure and gain keep the new values.
/// Set them again for a scan.
///
/// Returns 7; 6 for a handle that is not a live connection; 0 if a frame did not arrive. Then
/// nothing is appended. A board that is lost, closed or refuses, and closed cameras, also give 0,
/// after the time limit. **After a failure take one more snapshot and discard it:** an image of the
/// failed snapshot may be returned by the next successful one, as its second or third image.
///
/// Any thread, but not from a callback; one snapshot at a time on a handle. Blocks for operations
/// of other threads, then **up to 100 s for each image**. DisConnectDevice on another thread ends
/// the wait at once; the snapshot then returns 0.
KORVEX3SYNC_API RETSTATUS SnapColorImage(void* const& handle, std::vector<unsigned char*>& images,
                                         int& width, int& height, const int& cameraIndex,
                                         double& exposure, int& gain, const CONTROLROUTE& route);

/// Does the same as SnapColorImage and takes a third image, with strobe output 1 in state 3 for any
/// `route`. `exposures` and `gains` hold two entries each, for the second and the third image. The
/// second and the third image may be null. Afterwards strobe output 1 is in state 3.
///
/// Always runs in direct mode, so a handle of service mode must not be passed.
///
/// Results, threads and blocking time are those of SnapColorImage. It also returns 3, and does
/// nothing, if `exposures` or `gains` does not hold two entries.
KORVEX3SYNC_API RETSTATUS SnapColorImageForIR(void* const& handle,
                                              std::vector<unsigned char*>& images, int& width,
                                              int& height, const int& cameraIndex,
                                              std::vector<double>& exposures,
                                              std::vector<int>& gains, const CONTROLROUTE& route);

}  // namespace Korvex3Sync
