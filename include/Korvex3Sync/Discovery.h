#pragma once

#include <vector>

#include "Korvex3Sync/Export.h"
#include "Korvex3Sync/Status.h"

namespace Korvex3Sync {

/// Lists the attached cameras of a type.
///
/// The first two characters of `cameraType` name the maker ("KV": the virtual head). One entry per
/// camera that could be opened and read is appended to each vector (nothing is cleared first):
/// serial, image width and height in pixels, whether the camera gives colour. Each serial is a
/// 260-byte zero-terminated buffer that the caller frees with `delete[]`; a longer serial is cut.
/// `cameraCount` receives the number of cameras read. A camera that is shared by several sensors is
/// listed once for each of them, with the same serial.
///
/// Returns 7 in direct mode whatever was found, also for a null or unknown type (then 0 cameras); 0
/// when memory ran out, with `cameraCount` untouched: what was appended before is the caller's all
/// the same. 6 in service mode without a client. Any thread, but not beside SwitchOnDeviceService.
/// Blocks while the cameras are opened.
KORVEX3SYNC_API RETSTATUS GetCamerasInformation(const char* const& cameraType,
                                                std::vector<char*>& serials,
                                                std::vector<int>& widths, std::vector<int>& heights,
                                                std::vector<bool>& isColor, int& cameraCount);

/// Counts the attached cameras of a type without opening them; a count of 0 on any failure.
///
/// Each call keeps one camera instance, about 300 bytes, as long as the process lives: do not poll
/// it.
///
/// Returns 7 in direct mode, 0 when memory ran out; 6 in service mode without a client. Any thread.
KORVEX3SYNC_API RETSTATUS GetCameraCount(const char* const& cameraType, int& count);

/// Tells whether the board sits on a USB 3 port at USB 3 speed. The first argument is ignored.
///
/// Returns 7 and writes `onU3` when a board is found (the first one decides), else 0 with `onU3`
/// untouched. The same in both modes. Any thread; blocks while the USB tree is read, which callers
/// do one after the other.
KORVEX3SYNC_API RETSTATUS IsConnectedOnU3(const char* unused, bool& onU3);

}  // namespace Korvex3Sync
