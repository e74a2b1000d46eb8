#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/os/Condition.h"
#include "platform/os/CriticalSection.h"
#include "virtual_head/base/Export.h"

namespace Korvex3Sync::virtual_head {

/// Faults by call, for all platform libraries. Faults passes the orders on and describes them.
/// Thread-safe; `m_mutex` is not held while a call hangs or is slowed.
class KORVEX_VIRTUAL_HEAD_API CallFaults {
public:
    bool Fail(const std::string& call, int times);
    bool Slow(const std::string& call, std::chrono::milliseconds extra, int times);
    /// `lasting`: each hang of this call ends after this nominal time; 0: it does not end by
    /// itself.
    bool Hang(const std::string& call, int times, std::chrono::milliseconds lasting);
    void ReleaseHangs();
    void ReleaseHangs(const std::string& call);
    bool WaitForHang(const std::string& call, std::chrono::milliseconds limit);

    std::vector<std::string> Unused() const;
    void Clear();

    /// Applies the faults ordered for this call. True if the call must fail.
    bool Meet(const std::string& call);
    /// Whether this call is being slowed or hangs now.
    bool Holds(const std::string& call) const;
    /// The platform functions that can meet faults.
    static std::vector<std::string> Names();
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

    /// Blocks until waits of this call are released, at most for this nominal time.
    void WaitForRelease(const Orders& orders, std::optional<std::chrono::milliseconds> limit)
        KORVEX_REQUIRES(m_mutex);
    /// Blocks until the hang ends.
    void HangNow(Orders& orders) KORVEX_REQUIRES(m_mutex);

    mutable os::Mutex m_mutex;
    os::Condition m_changed;
    std::map<std::string, Orders> m_orders KORVEX_GUARDED_BY(m_mutex);
    std::uint64_t m_releases KORVEX_GUARDED_BY(m_mutex) = 0;
};

}  // namespace Korvex3Sync::virtual_head
