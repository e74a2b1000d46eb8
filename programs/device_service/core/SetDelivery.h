#pragma once

#include <Korvex3Sync/Statistics.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "device_service/core/SetRate.h"
#include "platform/os/CriticalSection.h"
#include "platform/tunnel/AreaWriter.h"

namespace Korvex3Sync::device_service {

/// What became of the sets of a connection since the device was connected.
struct SetCounts {
    std::uint64_t sets = 0;        ///< from direct mode; the number of the newest one
    std::uint64_t notWritten = 0;  ///< not in shared memory: all places were in use, or too large
    std::uint64_t noticesNotSent = 0;  ///< in shared memory, but the client takes no more notices
    std::uint32_t perSecond = 0;       ///< in the last second
};

/// One set that is in shared memory.
struct SetNotice {
    bool color = false;
    std::vector<std::string> segments;  ///< their names: left, right, colour
    std::int64_t device = 0;            ///< id of the device that took it
    SetCounts counts;
    ScanStatistics statistics;  ///< of direct mode, before this set counts as delivered
    bool moreFollow = true;     ///< false once the trigger has been switched off
};

/// Writes each set of a connection into shared memory and sends a notice of it. Runs in the scan
/// callback, so nothing here waits: a set without a free place in memory is counted, and so is one
/// whose notice cannot be sent.
class SetDelivery {
public:
    /// Returns false if the notice cannot be sent; does not wait.
    using Send = std::function<bool(const SetNotice&)>;

    /// `generation` is the id of the device. It makes the names of the segments unique.
    SetDelivery(void* handle, std::uint64_t generation, std::unique_ptr<tunnel::AreaWriter> area,
                Send send);

    /// The scan callback; its context is a SetDelivery.
    static void OnSet(const void* const& context, std::vector<unsigned char*>& images,
                      const int& width, const int& height, std::vector<int>& imageInfo);

    /// Any thread.
    SetCounts Counts() const;
    /// From now on, notices say whether more sets follow. Waits for a notice that is being sent.
    /// Returns what they said before. Any thread.
    bool MoreFollow(bool follow);

private:
    void Deliver(const std::vector<unsigned char*>& images, int width, int height);
    bool SendNotice(SetNotice& notice);

    void* const m_handle;
    const std::uint64_t m_generation;
    const std::unique_ptr<tunnel::AreaWriter> m_area;  // used in the scan callback only
    const Send m_send;
    mutable os::Mutex m_mutex;
    SetCounts m_counts KORVEX_GUARDED_BY(m_mutex);
    SetRate m_rate KORVEX_GUARDED_BY(m_mutex);
    os::Mutex m_sending;
    bool m_moreFollow KORVEX_GUARDED_BY(m_sending) = true;
};

}  // namespace Korvex3Sync::device_service
