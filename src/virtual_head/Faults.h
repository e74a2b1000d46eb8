#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "virtual_head/Export.h"

namespace Korvex3Sync::virtual_head {

/// Faults by call. A call is named by its platform function ("zr3DSetLaserEnable", "SnapShot").
/// Ordering a fault for a name that no platform library has, or for less than one time, returns
/// false and orders nothing. Orders for one call add up; a call that meets a hang meets nothing
/// else, and a slow call may also fail. Thread-safe.
class KORVEX_VIRTUAL_HEAD_API Faults {
public:
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
    /// Forgets what is ordered; a call that hangs goes on hanging.
    void Clear();

    /// For the device side: applies what is ordered for this call (blocks for slow and hang) and
    /// returns true when the call has to fail.
    bool Meet(const std::string& call);
    /// Whether a platform library has a call of this name.
    static bool Known(const std::string& call);

private:
    struct Orders {
        int fail = 0;
        int slow = 0;
        std::chrono::milliseconds extra{0};
        int hang = 0;
        int hanging = 0;
        std::uint64_t releases = 0;
    };

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::map<std::string, Orders> m_orders;
    std::uint64_t m_releases = 0;
};

}  // namespace Korvex3Sync::virtual_head
