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

/// The board's trigger output: a thread that gives exposures to all attached queues, according to
/// trigger period and mode. It runs in real time, like a device, whatever the time scale
/// (platform/os/TimeScale.h), and keeps its rate on average. Keys and trigger numbers start at 0
/// with each start of the trigger: a change from off or from single exposures to a running mode,
/// and from off to single exposures. Thread-safe.
class KORVEX_VIRTUAL_HEAD_API TriggerClock {
public:
    /// `color`: the head makes colour exposures. `sensors` must outlive the clock; if it is null,
    /// exposures have the power-on settings. Throws std::runtime_error if the thread cannot be
    /// started.
    explicit TriggerClock(bool color, Faults& faults, const SensorSettings* sensors = nullptr);
    /// Ends.
    ~TriggerClock();
    TriggerClock(const TriggerClock&) = delete;
    TriggerClock& operator=(const TriggerClock&) = delete;

    /// The board changed; see VirtualBoard::TriggerChanged. After it has switched the trigger off
    /// and returned, no further exposure is handed out. The first exposure of a running mode comes
    /// one period after the start. A period below 1 ms counts as 1 ms.
    void Apply(const BoardState& board, bool modeWritten);
    /// Without power nothing is triggered. Resets what Apply has set.
    void SetPower(bool on);
    /// From now on the queue gets all exposures. Attaching it twice has no effect.
    void Attach(const std::shared_ptr<ExposureQueue>& queue);
    /// Drops the exposures in the queue.
    void Detach(const std::shared_ptr<ExposureQueue>& queue);
    void DetachAll();
    /// Gives no more triggers and waits for a trigger that is being given.
    void End();
    /// Triggers since the head was created, including skipped ones and those without an attached
    /// camera.
    std::uint64_t Triggers() const;
    HeadCounts Counts() const;
    /// Exposures for which a queue had no room, since the head was created.
    std::uint64_t Lost() const;

private:
    void Run();
    Exposure Moment() const KORVEX_REQUIRES(m_mutex);
    bool Announced() const KORVEX_REQUIRES(m_mutex);
    /// Releases the mutex meanwhile. A fault may end the trigger that it begins with.
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
    /// Time of the next trigger of a running mode.
    std::chrono::steady_clock::time_point m_next KORVEX_GUARDED_BY(m_mutex);
    ExposureOutput m_output KORVEX_GUARDED_BY(m_mutex);
    /// The faults of all triggers below this number have begun.
    std::uint64_t m_announced KORVEX_GUARDED_BY(m_mutex) = 0;
    os::Thread m_thread;
};

}  // namespace Korvex3Sync::virtual_head
