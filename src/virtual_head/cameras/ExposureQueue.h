#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>

#include "virtual_head/Export.h"
#include "virtual_head/board/BoardState.h"
#include "virtual_head/cameras/SensorSettings.h"

namespace Korvex3Sync::virtual_head {

/// One exposure of the sensors, still without pixels: they are made when a camera fetches it.
struct Exposure {
    std::uint64_t trigger = 0;  // number of the trigger since the trigger was started, from 0
    std::uint8_t key = 0;       // trigger modulo 256
    bool color = false;         // a colour frame; otherwise a mono frame of both sensors
    BoardState light = {};      // the board at that moment
    std::array<SensorSetting, 2> sensors = {};  // exposure and gain of the left and the right one
    bool torn = false;                          // the camera refuses it
    bool misSized = false;                      // the camera gives it an impossible size
    bool counted = false;                       // its way is counted for the head (HeadCounts.h)
};

/// The exposures that wait for one camera instance. Bounded; what finds no room is counted.
class KORVEX_VIRTUAL_HEAD_API ExposureQueue {
public:
    enum class Pushed { Taken, NoRoom, Closed };
    /// Ways of the exposures that are counted for the head, by colour.
    struct Counts {
        std::array<std::uint64_t, 2> fetched{};
        std::array<std::uint64_t, 2> dropped{};
        std::uint64_t lost = 0;  // found no room; all of them
    };

    explicit ExposureQueue(std::size_t most) : m_most(most) {}
    /// Never blocks. Nothing is taken after Close.
    Pushed Push(const Exposure& exposure);
    /// Waits for an exposure, at most for the limit; nothing when the limit passes or on Close.
    std::optional<Exposure> Pop(std::chrono::milliseconds limit);
    /// Drops what waits.
    void Clear();
    /// Wakes a waiting Pop, which then gives nothing; later calls of Pop return nothing at once.
    void Close();
    /// Exposures that found no room.
    std::uint64_t Lost() const;
    Counts Counted() const;
    /// Drops what waits, gives the counts and begins them anew.
    Counts Settle();

private:
    void Drop();

    const std::size_t m_most;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Exposure> m_waiting;
    Counts m_counts;
    bool m_closed = false;
};

}  // namespace Korvex3Sync::virtual_head
