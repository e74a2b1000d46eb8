#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/tunnel/AreaWriter.h"

namespace Korvex3Sync::device_service {

// The images of the service have one size, because the notice of a set does not tell it.
inline constexpr int kImageWidth = 1280;
inline constexpr int kImageHeight = 1024;
inline constexpr std::size_t kImageBytes = std::size_t{kImageWidth} * kImageHeight;
/// Left, right, colour.
inline constexpr std::size_t kImagesOfASet = 3;

/// The area for the sets: room for eight, so that a client may be seven sets late. Null with the
/// reason if it cannot be made.
std::unique_ptr<tunnel::AreaWriter> MakeSetArea(std::string& reason);
/// The area for snapshots: room for two, so that one can be read while another is taken.
std::unique_ptr<tunnel::AreaWriter> MakeSnapshotArea(std::string& reason);

/// What to write for images of kImageBytes each, and the names of their segments. A missing (null)
/// image has no segment and an empty name. `names` owns the names that the segments refer to.
std::vector<tunnel::SegmentBytes> SegmentsOf(std::uint64_t generation, std::uint64_t number,
                                             const std::vector<unsigned char*>& images,
                                             std::vector<std::string>& names);

}  // namespace Korvex3Sync::device_service
