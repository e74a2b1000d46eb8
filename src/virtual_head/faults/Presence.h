#pragma once

#include <cstdint>
#include <functional>

#include "platform/os/CriticalSection.h"
#include "virtual_head/base/Export.h"

namespace Korvex3Sync::virtual_head {

/// Whether a device of the head is plugged in. After each return it counts as a new device: what
/// was opened before stays unusable. Thread-safe; blocks only as long as the given actions.
class KORVEX_VIRTUAL_HEAD_API Presence {
public:
    using Action = std::function<void()>;

    /// Unplugs the device, then runs the action, if any. It cannot return before the action has
    /// ended. False if it is not plugged in.
    bool Vanish(const Action& then);
    /// Runs the action, if any, then plugs the device in. False if it is not unplugged.
    bool Return(const Action& first);
    bool Here() const;
    /// Identifies the current plugging in.
    std::uint64_t Plug() const;
    /// A call to what was opened at `plug`. If that device is gone, returns false and the vanishing
    /// counts as noticed.
    bool Reach(std::uint64_t plug);
    /// A call to whatever is plugged in.
    bool Reach();
    /// Whether the device has vanished and no call has noticed it.
    bool Unnoticed() const;
    /// Resets what Unnoticed returns.
    void Forget();

private:
    // For calls, Leaving and Returning count as Gone.
    enum class State { Here, Leaving, Gone, Returning };

    bool Pass(State from, State to);

    mutable os::Mutex m_mutex;
    State m_state KORVEX_GUARDED_BY(m_mutex) = State::Here;
    bool m_unnoticed KORVEX_GUARDED_BY(m_mutex) = false;
    std::uint64_t m_plug KORVEX_GUARDED_BY(m_mutex) = 0;
};

}  // namespace Korvex3Sync::virtual_head
