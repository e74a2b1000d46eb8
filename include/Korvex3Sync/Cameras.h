#pragma once

#include "Korvex3Sync/Export.h"
#include "Korvex3Sync/Status.h"

namespace Korvex3Sync {

// Camera parameters. In this version the operations of this file that are not retired answer 5 (6
// for a null handle); their meaning is stated for the version that brings them.

/// Number of cameras that were opened; a camera that several sensors share counts once.
KORVEX3SYNC_API RETSTATUS GetConnectCameraCount(void* const& handle, int& count);

/// Serial of the first camera. `serial` must be null on entry and receives a zero-terminated buffer
/// that the caller frees with `delete[]`.
KORVEX3SYNC_API RETSTATUS GetCameraSerialNumber(void* const& handle, const int& cameraIndex,
                                                char*& serial);

/// Size of one image in pixels.
KORVEX3SYNC_API RETSTATUS GetCameraResolution(void* const& handle, const int& cameraIndex,
                                              int& width, int& height);

/// Exposure in milliseconds and gain of the camera at `cameraIndex` (0..3).
KORVEX3SYNC_API RETSTATUS SetCameraExposureAndGain(void* const& handle, const int& cameraIndex,
                                                   const double& exposure, const int& gain);
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
