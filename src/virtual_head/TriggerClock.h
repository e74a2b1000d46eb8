#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"
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
/// an exposure to every queue that is attached. It runs in real time, as a device does, whatever
/// the time scale (platform/os/TimeScale.h), and holds its rate on average. Keys and trigger
/// numbers start at 0 with each start of the trigger: a change from off, or from single exposures,
/// to a running mode, and from off to single exposures. Thread-safe.
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
    Exposure Moment() const KORVEX_REQUIRES(m_mutex);
    bool Announced() const KORVEX_REQUIRES(m_mutex);
    /// Gives the mutex up meanwhile: a fault may end the trigger that it comes with.
    void BeginDueFaults() KORVEX_REQUIRES(m_mutex);
    std::chrono::steady_clock::duration Period() const KORVEX_REQUIRES(m_mutex);

    const bool m_color;
    Faults& m_faults;
    const SensorSettings* const m_sensors;
    mutable os::Mutex m_mutex;
    os::Condition m_changed;
    bool m_end KORVEX_GUARDED_BY(m_mutex) = false;
    bool m_power KORVEX_GUARDED_BY(m_mutex) = true;
    BoardState m_board KORVEX_GUARDED_BY(m_mutex);
    /// The next trigger of a running mode.
    std::chrono::steady_clock::time_point m_next KORVEX_GUARDED_BY(m_mutex);
    ExposureOutput m_output KORVEX_GUARDED_BY(m_mutex);
    /// The trigger of this number minus 1 has begun its faults.
    std::uint64_t m_announced KORVEX_GUARDED_BY(m_mutex) = 0;
    os::Thread m_thread;
};

}  // namespace Korvex3Sync::virtual_head
