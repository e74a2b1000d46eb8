#pragma once

#include <vector>

#include "Korvex3Sync/Export.h"
#include "Korvex3Sync/Status.h"

namespace Korvex3Sync {

/// Lists the attached cameras of a type.
///
/// The first two characters of `cameraType` select the driver ("KV": the virtual head). The
/// function opens each camera of the type, reads its data and closes it again. For each camera that
/// it could read it appends one entry to each vector, without clearing the vector first:
///
/// - `serials`: the serial, in a zero-terminated buffer of 260 bytes that the caller frees with
///   `delete[]`. A longer serial is truncated.
/// - `widths`, `heights`: the size of one image in pixels.
/// - `isColor`: whether the camera gives colour images.
///
/// `cameraCount` receives the number of cameras read. A camera that several sensors share is listed
/// once for each of them, with the same serial.
///
/// Returns 7 in direct mode, even if there is no camera or the type is null or unknown: check
/// `cameraCount`. Returns 6 in service mode without a client. Returns 0 if memory runs out; then
/// `cameraCount` stays unchanged, and the caller still frees the serials that were appended.
///
/// Any thread, but not from a callback. Blocks while the cameras open and close, one after the
/// other.
KORVEX3SYNC_API RETSTATUS GetCamerasInformation(const char* const& cameraType,
                                                std::vector<char*>& serials,
                                                std::vector<int>& widths, std::vector<int>& heights,
                                                std::vector<bool>& isColor, int& cameraCount);

/// Counts the attached cameras of a type (see GetCamerasInformation) without opening them. `count`
/// is 0 if this fails.
///
/// Each call allocates about 300 bytes that are never freed, so do not call it in a loop.
///
/// Returns 7 in direct mode, even if there is no camera; 6 in service mode without a client; 0 if
/// memory runs out. Any thread, but not from a callback. Blocks for the camera library only.
KORVEX3SYNC_API RETSTATUS GetCameraCount(const char* const& cameraType, int& count);

/// Checks whether the board is connected at USB 3 speed. The first argument is ignored.
///
/// Returns 7 and sets `onU3` if a board is found; the first one found decides. Otherwise returns 0
/// and leaves `onU3` unchanged. Works in both modes. Any thread, but not from a callback. Blocks
/// for other callers of this function, then while the USB tree is read.
KORVEX3SYNC_API RETSTATUS IsConnectedOnU3(const char* unused, bool& onU3);

}  // namespace Korvex3Sync
