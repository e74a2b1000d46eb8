#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"
#include "virtual_head/base/Export.h"

namespace Korvex3Sync::virtual_head {

/// Faults by call, of all platform libraries. What orders mean is said at Faults, through which
/// they come. Thread-safe; `m_mutex` is not held while a call hangs or is slowed.
class KORVEX_VIRTUAL_HEAD_API CallFaults {
public:
    bool Fail(const std::string& call, int times);
    bool Slow(const std::string& call, std::chrono::milliseconds extra, int times);
    /// `lasting`: each hang of this call ends by itself after this nominal time; 0: it does not.
    bool Hang(const std::string& call, int times, std::chrono::milliseconds lasting);
    void ReleaseHangs();
    void ReleaseHangs(const std::string& call);
    bool WaitForHang(const std::string& call, std::chrono::milliseconds limit);

    std::vector<std::string> Unused() const;
    void Clear();

    /// Applies what is ordered for this call and returns true when the call has to fail.
    bool Meet(const std::string& call);
    /// Whether this call is being slowed or hangs now.
    bool Holds(const std::string& call) const;
    static bool Known(const std::string& call);

private:
    struct Orders {
        int fail = 0;
        int slow = 0;
        int slowed = 0;  // calls that are being slowed now
        std::chrono::milliseconds extra{0};
        int hang = 0;
        std::chrono::milliseconds lasting{0};
        int hanging = 0;
        std::uint64_t releases = 0;
    };

    /// Blocks until the hang ends.
    void HangNow(Orders& orders) KORVEX_REQUIRES(m_mutex);

    mutable os::Mutex m_mutex;
    os::Condition m_changed;
    std::map<std::string, Orders> m_orders KORVEX_GUARDED_BY(m_mutex);
    std::uint64_t m_releases KORVEX_GUARDED_BY(m_mutex) = 0;
};

}  // namespace Korvex3Sync::virtual_head
