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

/// Takes two colour images outside the scan: one under strobe state 3, one under strobe state 1
/// with the given exposure (milliseconds) and gain. The images are appended; they belong to the
/// caller, who frees each with `delete[]`. The second may be null. `width` and `height` receive
/// 1280 and 1024. Trigger and strobe stay as the snapshot left them.
///
/// In this version the answer is 5 (6 for a null handle).
KORVEX3SYNC_API RETSTATUS SnapColorImage(void* const& handle, std::vector<unsigned char*>& images,
                                         int& width, int& height, const int& cameraIndex,
                                         double& exposure, int& gain, const CONTROLROUTE& route);

/// As SnapColorImage, with a third image; `exposures` and `gains` hold two entries each, for the
/// second and the third. Always runs in direct mode.
///
/// In this version the answer is 5 (6 for a null handle).
KORVEX3SYNC_API RETSTATUS SnapColorImageForIR(void* const& handle,
                                              std::vector<unsigned char*>& images, int& width,
                                              int& height, const int& cameraIndex,
                                              std::vector<double>& exposures,
                                              std::vector<int>& gains, const CONTROLROUTE& route);

}  // namespace Korvex3Sync
