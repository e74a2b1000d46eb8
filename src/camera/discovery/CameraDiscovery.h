#pragma once

#include <vector>

namespace Korvex3Sync {

// Find the attached cameras of a type. Both functions run without a connection, on the caller's
// thread, and block while the camera library opens cameras. A camera that fails is skipped; only
// the number found is reported.

/// Appends serial (a `new[]` buffer of 260 bytes that the caller owns), image size and colour flag
/// of each camera that could be opened and read. Returns their number.
int GetAllSpecifyTypeCameraInformation(const char* const& cameraType, std::vector<char*>& serials,
                                       std::vector<int>& widths, std::vector<int>& heights,
                                       std::vector<bool>& isColor);

/// Number of attached cameras of the type; 0 on any failure.
int GetSpecifyTypeCameraCount(const char* const& cameraType);

}  // namespace Korvex3Sync
