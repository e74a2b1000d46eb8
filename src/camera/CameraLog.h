#pragma once

namespace Korvex3Sync {

/// The source name of the records of this folder.
inline constexpr char kPhysicalCameraThreadLog[] = "camera/PhysicalCameraThread";

}  // namespace Korvex3Sync
