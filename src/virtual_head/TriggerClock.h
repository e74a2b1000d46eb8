#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/os/Thread.h"
#include "virtual_head/BoardState.h"
#include "virtual_head/Export.h"
#include "virtual_head/SensorSettings.h"

namespace Korvex3Sync::virtual_head {

/// One exposure of the sensors, still without pixels: they are made when a camera fetches it.
struct Exposure {
    std::uint64_t trigger = 0;  // number of the trigger since the trigger was started, from 0
    std::uint8_t key = 0;       // trigger modulo 256
    bool color = false;         // a colour frame; otherwise a mono frame of both sensors
    BoardState light;           // the board at that moment
    std::array<SensorSetting, 2> sensors;  // exposure and gain of the left and the right one
};

/// The exposures that wait for one camera instance. Bounded; what finds no room is counted.
class KORVEX_VIRTUAL_HEAD_API ExposureQueue {
public:
    explicit ExposureQueue(std::size_t most) : m_most(most) {}
    /// Never blocks. Nothing is taken after Close.
    void Push(const Exposure& exposure);
    /// Waits for an exposure, at most for the limit; nothing when the limit passes or on Close.
    std::optional<Exposure> Pop(std::chrono::milliseconds limit);
    /// Drops what waits.
    void Clear();
    /// Wakes a waiting Pop, which then gives nothing; later calls of Pop return nothing at once.
    void Close();
    /// Exposures that found no room.
    std::uint64_t Lost() const;

private:
    const std::size_t m_most;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Exposure> m_waiting;
    std::uint64_t m_lost = 0;
    bool m_closed = false;
};

/// The board's trigger output: a thread that, at the trigger period and in the trigger mode, hands
/// an exposure to every queue that is attached. It runs in real time, as a device does, and holds
/// its rate on average. Keys and trigger numbers start at 0 with each start of the trigger: a
/// change from off, or from single exposures, to a running mode, and from off to single exposures.
/// Thread-safe.
class KORVEX_VIRTUAL_HEAD_API TriggerClock {
public:
    /// `color`: the head makes colour exposures. `sensors` may be null: then exposures have the
    /// settings of power-on; it outlives the clock. Throws std::runtime_error without a thread.
    explicit TriggerClock(bool color, const SensorSettings* sensors = nullptr);
    ~TriggerClock();
    TriggerClock(const TriggerClock&) = delete;
    TriggerClock& operator=(const TriggerClock&) = delete;

    /// The board changed; see VirtualBoard::TriggerChanged. When it returns from switching the
    /// trigger off, no further exposure is handed out. The first one of a running mode comes one
    /// period after its start; a period below 1 ms counts as 1 ms.
    void Apply(const BoardState& board, bool modeWritten);
    /// From now on the queue gets each exposure. Attaching it twice changes nothing.
    void Attach(const std::shared_ptr<ExposureQueue>& queue);
    void Detach(const std::shared_ptr<ExposureQueue>& queue);
    /// Triggers given since the head exists, whether or not a camera was attached.
    std::uint64_t Triggers() const;
    /// Exposures that found no room in a queue, since the head exists.
    std::uint64_t Lost() const;

private:
    void Run();
    void GiveTrigger(bool mono, bool color);
    void Hand(bool color);
    std::chrono::steady_clock::duration Period() const;

    const bool m_color;
    const SensorSettings* const m_sensors;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_end = false;
    BoardState m_board;
    std::chrono::steady_clock::time_point m_next;  // of a running mode
    std::uint64_t m_trigger = 0;
    std::uint64_t m_total = 0;
    std::uint64_t m_lostDetached = 0;
    std::vector<std::shared_ptr<ExposureQueue>> m_queues;
    os::Thread m_thread;
};

}  // namespace Korvex3Sync::virtual_head
