#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>

#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"
#include "virtual_head/base/Export.h"
#include "virtual_head/cameras/Exposure.h"

namespace Korvex3Sync::virtual_head {

/// The exposures that wait for one camera instance. Bounded: an exposure for which there is no room
/// is lost and counted.
class KORVEX_VIRTUAL_HEAD_API ExposureQueue {
public:
    enum class Pushed { Taken, NoRoom, Closed };
    /// What happened to the exposures that are included in HeadCounts, by colour.
    struct Counts {
        std::array<std::uint64_t, 2> fetched{};
        std::array<std::uint64_t, 2> dropped{};
        std::uint64_t lost = 0;  // no room; includes exposures that are not in HeadCounts
    };

    explicit ExposureQueue(std::size_t most) : m_most(most) {}
    /// Never blocks. Takes nothing after Close.
    Pushed Push(const Exposure& exposure);
    /// Waits for an exposure. Returns nothing after the deadline or Close.
    std::optional<Exposure> Pop(std::chrono::steady_clock::time_point deadline);
    /// Drops the waiting exposures.
    void Clear();
    /// Ends a waiting Pop; from now on Pop returns nothing at once.
    void Close();
    /// Exposures for which there was no room.
    std::uint64_t Lost() const;
    Counts Counted() const;
    /// Drops the waiting exposures, returns the counts and resets them.
    Counts Settle();

private:
    void Drop() KORVEX_REQUIRES(m_mutex);

    const std::size_t m_most;
    mutable os::Mutex m_mutex;
    os::Condition m_changed;
    std::deque<Exposure> m_waiting KORVEX_GUARDED_BY(m_mutex);
    Counts m_counts KORVEX_GUARDED_BY(m_mutex);
    bool m_closed KORVEX_GUARDED_BY(m_mutex) = false;
};

}  // namespace Korvex3Sync::virtual_head
