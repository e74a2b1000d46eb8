#include "service/ReadSet.h"

#include <cstring>

#include "device_service/core/ImageAreas.h"
#include "platform/include/QtTunnel.h"

namespace bench {

using Korvex3Sync::device_service::kImageBytes;

bool SetReader::Read(const QList<QVariant>& notice) {
    constexpr int kNames = 3;
    constexpr unsigned long long kAreaSize = 1024;
    const QStringList names = notice.value(kNames).toStringList();
    m_images.resize(static_cast<std::size_t>(names.size()), std::vector<char>(kImageBytes));
    QtTunnel::SharedMemory* const area =
        QtTunnel::SharedMemory::open("ZrSyncService_SharedMemory", kAreaSize);
    bool whole = area != nullptr && !names.isEmpty();
    for (int i = 0; whole && i < names.size(); ++i) {
        QtTunnel::Segment* const segment = area->segment(names[i], 0);
        whole = segment != nullptr && segment->lock();
        if (segment != nullptr) {
            const auto size = static_cast<qint64>(kImageBytes);
            whole =
                whole && segment->read(m_images[static_cast<std::size_t>(i)].data(), size) == size;
            segment->unlock();
            area->destroy(segment);
        }
    }
    return whole;
}

std::int64_t SetReader::Stamp() const {
    std::int64_t stamp = 0;
    std::memcpy(&stamp, m_images.front().data(), sizeof(stamp));
    return stamp;
}

}  // namespace bench
