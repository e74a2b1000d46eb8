#pragma once

#include <vector>

#include "Korvex3Sync/Export.h"
#include "Korvex3Sync/Status.h"
#include "Korvex3Sync/Types.h"

namespace Korvex3Sync {

/// Sets the scan callback and the pointer that is handed back to it; null ends it. Once this has
/// returned, the callback that was set before is not called again.
///
/// Returns 7; 6 for a null handle. Blocks while a scan callback runs. Not from a callback.
KORVEX3SYNC_API RETSTATUS SetScanCallBackFunction(void* const& handle,
                                                  ScanCallBackFunction callback, void* context);

/// Sets the status callback. The first call starts the status thread and switches the board's
/// heartbeat on; later calls switch it off when `callback` or `context` is null, else on. After
/// each call the next four polls (about 0.8 s) are silent. The thread polls the board only while a
/// callback is set: only then is a lost board noticed, and one that answers again taken up.
///
/// Returns 7; 6 for a null handle; 0 when the thread cannot be started. The first call for a handle
/// must not run beside another. Any thread, also from a status callback, but not from a scan
/// callback. Blocks while a status callback runs and for the board's answer.
KORVEX3SYNC_API RETSTATUS SetStatusCallBackFunction(void* const& handle,
                                                    StatusCallBackFunction callback, void* context);

/// Takes two colour images outside the scan: the first with the strobe output `route` in state 3
/// and the exposure that the camera has, the second in state 1 with `exposure` (milliseconds) and
/// `gain` for `cameraIndex`, as SetCameraExposureAndGain takes them; both are only read. Colour
/// frames that come meanwhile are taken for the snapshot; the trigger of a running scan is switched
/// off.
///
/// The images are appended to `images` as `new[]` blocks that belong to the caller, who frees each
/// with `delete[]`, also after DisConnectDevice. Each holds an 8-bit RGGB mosaic **of the size of
/// the camera**, which GetCameraResolution gives: `width` and `height` receive 1280 and 1024
/// whatever that is. The second image may be null.
///
/// Trigger and strobe stay as the snapshot left them (trigger mode TRIGGER_SINGLE_COLOR, strobe
/// state 1), also after a failure: set them as they shall be. Exposure and gain stay too.
///
/// A route outside 0..2 does not stop the snapshot: the strobe is not switched then.
///
/// Returns 7; 6 for a null handle; 0 when a frame did not come: nothing is appended then. A board
/// that is lost, not open or refuses, and cameras that were closed, are not told apart from frames
/// that do not come. **An image that a failed snapshot caught may stay** and come out of the next
/// successful one, in the place of its second or third image: after a failure take one snapshot
/// more and discard it. Any thread outside the callbacks; one snapshot at a time on a handle, and
/// not beside DisConnectDevice. Blocks for the frames, **up to 100 s for each image**, and for
/// operations of other threads; nothing ends the wait for a frame early.
KORVEX3SYNC_API RETSTATUS SnapColorImage(void* const& handle, std::vector<unsigned char*>& images,
                                         int& width, int& height, const int& cameraIndex,
                                         double& exposure, int& gain, const CONTROLROUTE& route);

/// As SnapColorImage, with a third image: that one with strobe output 1, whatever `route` is, in
/// state 3, and the second `exposures` and `gains`. Both hold two entries, for the second and the
/// third image. The second and the third image may be null. Trigger and strobe output 1 stay as the
/// third image left them. Always runs in direct mode: never with a handle of service mode.
///
/// Returns and blocks as SnapColorImage does; 3 when `exposures` or `gains` does not hold two
/// entries: nothing is done then.
KORVEX3SYNC_API RETSTATUS SnapColorImageForIR(void* const& handle,
                                              std::vector<unsigned char*>& images, int& width,
                                              int& height, const int& cameraIndex,
                                              std::vector<double>& exposures,
                                              std::vector<int>& gains, const CONTROLROUTE& route);

}  // namespace Korvex3Sync
