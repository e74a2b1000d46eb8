#include "device_service/core/ImageAreas.h"

#include <array>
#include <cstdio>

namespace Korvex3Sync::device_service {

namespace {

constexpr std::size_t kSets = 8;
constexpr std::size_t kSnapshots = 2;
constexpr std::size_t kImagesOfASnapshot = 2;

}  // namespace

std::unique_ptr<tunnel::AreaWriter> MakeSetArea(std::string& reason) {
    return tunnel::AreaWriter::Make("ZrSyncService_SharedMemory", kSets * kImagesOfASet,
                                    kImageBytes, reason);
}

std::unique_ptr<tunnel::AreaWriter> MakeSnapshotArea(std::string& reason) {
    return tunnel::AreaWriter::Make("ZrSyncService_Snapshot", kSnapshots * kImagesOfASnapshot,
                                    kImageBytes, reason);
}

std::vector<tunnel::SegmentBytes> SegmentsOf(std::uint64_t generation, std::uint64_t number,
                                             const std::vector<unsigned char*>& images,
                                             std::vector<std::string>& names) {
    std::vector<tunnel::SegmentBytes> segments;
    names.clear();
    names.reserve(images.size());
    for (std::size_t place = 0; place < images.size(); ++place) {
        if (images[place] == nullptr) {
            names.emplace_back();
            continue;
        }
        std::array<char, 48> name{};
        std::snprintf(name.data(), name.size(), "%llx-%llu-%zu",
                      static_cast<unsigned long long>(generation),
                      static_cast<unsigned long long>(number), place);
        names.emplace_back(name.data());
        segments.push_back({names.back(), images[place], kImageBytes});
    }
    return segments;
}

}  // namespace Korvex3Sync::device_service
