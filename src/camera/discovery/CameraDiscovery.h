#pragma once

#include <vector>

namespace Korvex3Sync {

// Which cameras of a type are attached. Both run without a connection, on the caller's thread, and
// block while the camera library opens cameras. Failures are skipped; nothing is reported but the
// number found.

/// Appends serial (260-byte `new[]` buffer, the caller's), image size and colour flag of each
/// camera that could be opened and read; gives their number.
int GetAllSpecifyTypeCameraInformation(const char* const& cameraType, std::vector<char*>& serials,
                                       std::vector<int>& widths, std::vector<int>& heights,
                                       std::vector<bool>& isColor);

/// Number of attached cameras of the type; 0 on any failure.
int GetSpecifyTypeCameraCount(const char* const& cameraType);

}  // namespace Korvex3Sync
