#pragma once

#include <cstdint>
#include <functional>

#include "platform/os/CriticalSection.h"
#include "virtual_head/base/Export.h"

namespace Korvex3Sync::virtual_head {

/// Whether a device of the head is plugged in. Each time that it comes back it is another one: what
/// was opened on the one before stays dead. Thread-safe; blocks only as long as the actions given.
class KORVEX_VIRTUAL_HEAD_API Presence {
public:
    using Action = std::function<void()>;

    /// Unplugs it, then runs the action, if any; a return has to wait for its end. False when it is
    /// not there.
    bool Vanish(const Action& then);
    /// Runs the action, if any, then plugs it in. False when it is not gone.
    bool Return(const Action& first);
    bool Here() const;
    /// Tells one plugging in from the next.
    std::uint64_t Plug() const;
    /// A call goes to what was opened at `plug`: false, and the vanishing has been met, when that
    /// one is gone.
    bool Reach(std::uint64_t plug);
    /// A call goes to whatever is plugged in.
    bool Reach();
    /// Whether it has vanished and no call has noticed.
    bool Unnoticed() const;
    /// Forgets that nobody noticed.
    void Forget();

private:
    // Leaving and Returning are Gone to calls.
    enum class State { Here, Leaving, Gone, Returning };

    bool Pass(State from, State to);

    mutable os::Mutex m_mutex;
    State m_state KORVEX_GUARDED_BY(m_mutex) = State::Here;
    bool m_unnoticed KORVEX_GUARDED_BY(m_mutex) = false;
    std::uint64_t m_plug KORVEX_GUARDED_BY(m_mutex) = 0;
};

}  // namespace Korvex3Sync::virtual_head
