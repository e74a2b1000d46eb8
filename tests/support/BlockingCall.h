#pragma once

#include <atomic>
#include <functional>
#include <future>

namespace Korvex3Sync::tests::support {

/// The system's number of the calling thread.
int ThisThread();

/// Waits until a thread of this process is blocked. It must be in the same sleep several times in a
/// row, so that a short wait for a lock does not count. False if it does not block within a minute
/// of real time.
bool WaitUntilBlocked(int thread);

/// A call on its own thread. The destructor waits for its end.
class BlockingCall {
public:
    explicit BlockingCall(std::function<void()> call);

    /// Waits until the call is blocked, whatever it waits for. False if it returns instead.
    bool WaitUntilBlocked() const;
    /// Waits until the call has returned; false if it does not within a minute of real time.
    bool WaitUntilReturned() const;

private:
    std::atomic<int> m_thread{0};
    std::future<void> m_end;
};

}  // namespace Korvex3Sync::tests::support
