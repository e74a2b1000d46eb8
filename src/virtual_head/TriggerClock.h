#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

#include "platform/os/Thread.h"
#include "virtual_head/base/Export.h"
#include "virtual_head/board/BoardState.h"
#include "virtual_head/cameras/ExposureOutput.h"
#include "virtual_head/cameras/ExposureQueue.h"
#include "virtual_head/cameras/HeadCounts.h"
#include "virtual_head/cameras/SensorSettings.h"

namespace Korvex3Sync::virtual_head {

class Faults;

/// The board's trigger output: a thread that, at the trigger period and in the trigger mode, hands
/// an exposure to every queue that is attached. It runs in real time, as a device does, and holds
/// its rate on average. Keys and trigger numbers start at 0 with each start of the trigger: a
/// change from off, or from single exposures, to a running mode, and from off to single exposures.
/// Thread-safe.
class KORVEX_VIRTUAL_HEAD_API TriggerClock {
public:
    /// `color`: the head makes colour exposures. `sensors` may be null: then exposures have the
    /// settings of power-on; it outlives the clock. Throws std::runtime_error without a thread.
    explicit TriggerClock(bool color, Faults& faults, const SensorSettings* sensors = nullptr);
    /// Ends.
    ~TriggerClock();
    TriggerClock(const TriggerClock&) = delete;
    TriggerClock& operator=(const TriggerClock&) = delete;

    /// The board changed; see VirtualBoard::TriggerChanged. When it returns from switching the
    /// trigger off, no further exposure is handed out. The first one of a running mode comes one
    /// period after its start; a period below 1 ms counts as 1 ms.
    void Apply(const BoardState& board, bool modeWritten);
    /// Without power nothing is triggered, and what is applied is forgotten.
    void SetPower(bool on);
    /// From now on the queue gets each exposure. Attaching it twice changes nothing.
    void Attach(const std::shared_ptr<ExposureQueue>& queue);
    /// Drops what waits in the queue.
    void Detach(const std::shared_ptr<ExposureQueue>& queue);
    void DetachAll();
    /// Gives no more triggers and waits for the one that is being given.
    void End();
    /// Triggers given since the head exists, whether or not a camera was attached; skipped ones
    /// among them.
    std::uint64_t Triggers() const;
    HeadCounts Counts() const;
    /// Exposures that found no room in a queue, since the head exists.
    std::uint64_t Lost() const;

private:
    void Run();
    Exposure Moment() const;
    bool Announced() const;
    void BeginDueFaults(std::unique_lock<std::mutex>& lock);
    std::chrono::steady_clock::duration Period() const;

    const bool m_color;
    Faults& m_faults;
    const SensorSettings* const m_sensors;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_end = false;
    bool m_power = true;
    BoardState m_board;
    std::chrono::steady_clock::time_point m_next;  // of a running mode
    ExposureOutput m_output;
    std::uint64_t m_announced = 0;  // the trigger of this number minus 1 has begun its faults
    os::Thread m_thread;
};

}  // namespace Korvex3Sync::virtual_head
