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

/// All faults of a head, ordered by a test or by the head's description. An impossible order (an
/// unknown function name, a count below 1, the return of a device that is present) is refused: the
/// function returns false and orders nothing. Orders add up. Thread-safe.
///
/// A fault by call names the platform function ("zr3DSetLaserEnable", "SnapShot"). A call that
/// hangs gets no other fault; a slow call may also fail.
class KORVEX_VIRTUAL_HEAD_API Faults {
public:
    /// How the rest of the head reacts to a fault. Called on the thread where the fault begins,
    /// without a lock of the faults.
    struct Hooks {
        std::function<void()> boardVanished;
        std::function<void()> boardReturned;
        std::function<void()> cameraVanished;
    };

    /// Faults are entered in the journal, if there is one, when a call or frame gets them. No timed
    /// fault begins before Start.
    explicit Faults(Journal* journal = nullptr);
    /// Sets the hooks and starts the timed faults, whose time counts from now on. Call it once,
    /// before the head is used. Throws std::runtime_error if a thread for them cannot be started.
    void Start(Hooks hooks, const std::vector<TimedFault>& timed, std::uint64_t seed);
    /// Stops the timed faults and waits for one that is beginning.
    void End();

    /// Orders any fault, which begins now. A vanishing needs a device that is present, a return one
    /// that is gone, an answer a mute board.
    bool Order(const FaultOrder& order);
    /// The next `times` calls fail.
    bool Fail(const std::string& call, int times);
    /// The next `times` calls take `extra` longer.
    bool Slow(const std::string& call, std::chrono::milliseconds extra, int times);
    /// The next call blocks until ReleaseHangs, and then fails.
    bool Hang(const std::string& call);
    /// Ends all current hangs, and lets calls that are being slowed continue at once. A hang that
    /// no call has reached yet stays ordered.
    void ReleaseHangs();
    /// Does this for one function only. Closing a board does it for the call that the board is in,
    /// for all handles of that board.
    void ReleaseHangs(const std::string& call);
    /// Waits until a call of this function hangs. False after the limit, which is real time.
    bool WaitForHang(const std::string& call, std::chrono::milliseconds limit);

    /// Faults that were ordered but not used completely, as "fail SnapShot: 2 left".
    std::vector<std::string> Unused() const;
    /// Cancels all orders, and ends a mute board and a stopped camera. A call that hangs continues
    /// to hang; a device that is gone stays gone.
    void Clear();

    /// For the device side: applies the faults ordered for this call (blocks for slow and hang).
    /// True if the call must fail.
    bool Meet(const std::string& call) { return m_calls.Meet(call); }
    /// For the device side: whether this call is being slowed or hangs now.
    bool Holds(const std::string& call) const { return m_calls.Holds(call); }
    /// Whether a platform library has a call of this name.
    static bool Known(const std::string& call) { return CallFaults::Known(call); }

    // For the device side: the faults of each part.
    BoardFaults& Board() { return m_board; }
    FrameFaults& Frames() { return m_frames; }
    FaultSchedule& Schedule() { return m_schedule; }
    Presence& Camera() { return m_camera; }
    const Presence& Camera() const { return m_camera; }
    /// Whether a call reaches the camera that was opened at `plug`. If not, enters it in the
    /// journal.
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
