#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "virtual_head/base/Export.h"
#include "virtual_head/faults/BoardFaults.h"
#include "virtual_head/faults/CallFaults.h"
#include "virtual_head/faults/FaultOrder.h"
#include "virtual_head/faults/FaultSchedule.h"
#include "virtual_head/faults/FrameFaults.h"
#include "virtual_head/faults/Presence.h"

namespace Korvex3Sync::virtual_head {

/// Everything that can be made to go wrong with a head: from a test, or by the head's description.
/// What cannot be (a name that no platform library has, less than one time, a return of what is
/// there) is refused: false, and nothing is ordered. Orders add up. Thread-safe.
///
/// By call, a fault names the platform function ("zr3DSetLaserEnable", "SnapShot"); a call that
/// meets a hang meets nothing else, and a slow call may also fail.
class KORVEX_VIRTUAL_HEAD_API Faults {
public:
    /// What the rest of the head does about a fault. Called on the thread where the fault begins,
    /// without a lock of the faults.
    struct Hooks {
        std::function<void()> boardVanished;
        std::function<void()> boardReturned;
        std::function<void()> cameraVanished;
    };

    /// Faults go into the journal, when there is one, as they are met. No timed fault begins before
    /// Start.
    explicit Faults(Journal* journal = nullptr);
    /// Tells the faults of their head, and begins the timed ones; from now on their time counts.
    /// Once, before the head is used. Throws std::runtime_error without a thread for them.
    void Start(Hooks hooks, const std::vector<TimedFault>& timed, std::uint64_t seed);
    /// Lets no timed fault begin any more and waits for the one that is beginning.
    void End();

    /// Any fault, beginning now. A vanishing needs the device to be there, a return needs it to be
    /// gone, an answer needs a mute board.
    bool Order(const FaultOrder& order);
    /// The next `times` calls fail.
    bool Fail(const std::string& call, int times);
    /// The next `times` calls take `extra` longer.
    bool Slow(const std::string& call, std::chrono::milliseconds extra, int times);
    /// The next call blocks until ReleaseHangs, and then fails.
    bool Hang(const std::string& call);
    /// Ends every hang that blocks now; hangs that no call has met yet stay ordered.
    void ReleaseHangs();
    /// The same for the hangs of one call only. Closing a board whose call hangs does this, for
    /// every handle of that board.
    void ReleaseHangs(const std::string& call);
    /// Waits until a call hangs here; false when the real-time limit passes first.
    bool WaitForHang(const std::string& call, std::chrono::milliseconds limit);

    /// Faults that were ordered and have not been met in full, as "fail SnapShot: 2 left".
    std::vector<std::string> Unused() const;
    /// Forgets what is ordered, and ends a mute board and a stopped camera. A call that hangs goes
    /// on hanging, a device that is gone stays gone.
    void Clear();

    /// For the device side: applies what is ordered for this call (blocks for slow and hang) and
    /// returns true when the call has to fail.
    bool Meet(const std::string& call) { return m_calls.Meet(call); }
    /// For the device side: whether this call is being slowed or hangs now.
    bool Holds(const std::string& call) const { return m_calls.Holds(call); }
    /// Whether a platform library has a call of this name.
    static bool Known(const std::string& call) { return CallFaults::Known(call); }

    // For the device side: what is wrong with each part.
    BoardFaults& Board() { return m_board; }
    FrameFaults& Frames() { return m_frames; }
    FaultSchedule& Schedule() { return m_schedule; }
    Presence& Camera() { return m_camera; }
    const Presence& Camera() const { return m_camera; }
    /// Whether a call on a camera that was opened at `plug` gets there; journals it when not.
    bool ReachCamera(std::uint64_t plug, const std::string& call);
    /// The same for a call that needs no open camera.
    bool ReachCamera(const std::string& call);

private:
    bool OrderByCall(const FaultOrder& order);
    bool OrderVanishing(Presence& device, const FaultOrder& order, FaultKind end,
                        const std::function<void()>& hook);
    bool EndLater(const FaultOrder& order, FaultKind end);
    bool Reached(bool reached, const std::string& call);

    Journal* const m_journal;
    CallFaults m_calls;
    BoardFaults m_board;
    FrameFaults m_frames;
    Presence m_camera;
    FaultSchedule m_schedule;
    Hooks m_hooks;
};

}  // namespace Korvex3Sync::virtual_head
