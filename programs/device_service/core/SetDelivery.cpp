#include "device_service/core/SetDelivery.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <span>
#include <utility>

#include "device_service/core/ImageAreas.h"

namespace Korvex3Sync::device_service {

SetDelivery::SetDelivery(void* handle, std::uint64_t generation,
                         std::unique_ptr<tunnel::AreaWriter> area, Send send)
    : m_handle(handle),
      m_generation(generation),
      m_area(std::move(area)),
      m_send(std::move(send)) {}

void SetDelivery::OnSet(const void* const& context, std::vector<unsigned char*>& images,
                        const int& width, const int& height, std::vector<int>& /*imageInfo*/) {
    static_cast<SetDelivery*>(const_cast<void*>(context))->Deliver(images, width, height);
}

void SetDelivery::Deliver(const std::vector<unsigned char*>& images, int width, int height) {
    SetNotice notice;
    std::uint64_t number = 0;
    {
        const os::MutexGuard guard(m_mutex);
        number = ++m_counts.sets;
        m_rate.Count(std::chrono::steady_clock::now());
    }
    const bool written =
        width == kImageWidth && height == kImageHeight && images.size() <= kImagesOfASet &&
        m_area->WriteSet(SegmentsOf(m_generation, number, images, notice.segments));
    if (!written) {
        const os::MutexGuard guard(m_mutex);
        ++m_counts.notWritten;
        return;
    }
    notice.color = images.size() > 2;
    notice.device = static_cast<std::int64_t>(m_generation);
    notice.counts = Counts();
    GetScanStatistics(m_handle, notice.statistics);
    if (!SendNotice(notice)) {
        const os::MutexGuard guard(m_mutex);
        ++m_counts.noticesNotSent;
    }
}

bool SetDelivery::SendNotice(SetNotice& notice) {
    const os::MutexGuard guard(m_sending);
    notice.moreFollow = m_moreFollow;
    return m_send(notice);
}

bool SetDelivery::MoreFollow(bool follow) {
    const os::MutexGuard guard(m_sending);
    return std::exchange(m_moreFollow, follow);
}

SetCounts SetDelivery::Counts() const {
    const os::MutexGuard guard(m_mutex);
    SetCounts counts = m_counts;
    counts.perSecond = m_rate.PerSecond(std::chrono::steady_clock::now());
    return counts;
}

}  // namespace Korvex3Sync::device_service
