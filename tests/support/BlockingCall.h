#pragma once

#include <atomic>
#include <functional>
#include <future>

namespace Korvex3Sync::tests::support {

/// The calling thread, as the system numbers it.
int ThisThread();

/// Waits until a thread of this process is blocked: it sleeps, and is found in the same sleep again
/// and again, so that a lock which it waits for only shortly on its way does not count. False when
/// it is not within a minute of real time.
bool WaitUntilBlocked(int thread);

/// A call on a thread of its own. The destructor waits for its end.
class BlockingCall {
public:
    explicit BlockingCall(std::function<void()> call);

    /// Waits until the call is blocked, whatever it waits for. False when it returns instead.
    bool WaitUntilBlocked() const;
    /// Waits until the call has returned; false when it has not within a minute of real time.
    bool WaitUntilReturned() const;

private:
    std::atomic<int> m_thread{0};
    std::future<void> m_end;
};

}  // namespace Korvex3Sync::tests::support
