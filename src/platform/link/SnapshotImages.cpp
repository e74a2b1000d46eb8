#include "platform/link/SnapshotImages.h"

#include <cstring>
#include <memory>
#include <optional>
#include <string>

#include "platform/link/Operations.h"
#include "platform/os/Log.h"
#include "platform/tunnel/AreaReader.h"

namespace Korvex3Sync::link {
namespace {

using ImageBytes = std::unique_ptr<unsigned char[]>;

bool CopySegment(tunnel::AreaReader& area, const std::string& name, std::size_t leastBytes,
                 ImageBytes& image) {
    const std::optional<tunnel::PinnedSegment> segment = area.Pin(name);
    if (!segment) {
        LOG(ERROR) << "Snapshot: segment " << name << " does not exist";
        return false;
    }
    const auto bytes = segment->Bytes();
    if (bytes.empty() || bytes.size() < leastBytes) {
        LOG(ERROR) << "Snapshot: segment " << name << " has " << bytes.size()
                   << " bytes instead of " << leastBytes;
        return false;
    }
    image = std::make_unique_for_overwrite<unsigned char[]>(bytes.size());
    std::memcpy(image.get(), bytes.data(), bytes.size());
    return true;
}

}  // namespace

bool AppendSnapshotImages(const QStringList& segments, std::size_t leastBytes,
                          std::vector<unsigned char*>& images) {
    std::string reason;
    const auto area = tunnel::AreaReader::Open(kSnapshotArea, reason);
    if (!area) {
        LOG(ERROR) << "Snapshot: " << reason;
        return false;
    }
    std::vector<ImageBytes> copies;
    for (const QString& name : segments) {
        ImageBytes image;
        if (!name.isEmpty() && !CopySegment(*area, name.toStdString(), leastBytes, image)) {
            return false;
        }
        copies.push_back(std::move(image));
    }
    images.reserve(images.size() + copies.size());
    for (ImageBytes& image : copies) {
        images.push_back(image.release());
    }
    return true;
}

}  // namespace Korvex3Sync::link
