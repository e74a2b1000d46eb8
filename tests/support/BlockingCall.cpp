#include "support/BlockingCall.h"

#include <string>
#include <utility>

#include "support/ThreadState.h"
#include "support/WaitUntil.h"

namespace Korvex3Sync::tests::support {
namespace {

/// How often a thread must be seen in the same sleep.
constexpr int kLooks = 20;

/// Checks whether a thread is blocked; call it repeatedly.
class Observer {
public:
    bool IsBlocked(int thread) {
        const std::string sleep = SleepOf(thread);
        m_looks = sleep.empty() || sleep != m_sleep ? 0 : m_looks + 1;
        m_sleep = sleep;
        return m_looks >= kLooks;
    }

private:
    std::string m_sleep;
    int m_looks = 0;
};

bool IsReady(const std::future<void>& end) {
    return end.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

}  // namespace

bool WaitUntilBlocked(int thread) {
    Observer observer;
    return WaitUntil([&] { return observer.IsBlocked(thread); });
}

BlockingCall::BlockingCall(std::function<void()> call)
    : m_end(std::async(std::launch::async, [this, call = std::move(call)] {
          m_thread = ThisThread();
          call();
      })) {}

bool BlockingCall::WaitUntilBlocked() const {
    Observer observer;
    return WaitUntil(
               [&] { return IsReady(m_end) || (m_thread != 0 && observer.IsBlocked(m_thread)); }) &&
           !IsReady(m_end);
}

bool BlockingCall::WaitUntilReturned() const {
    return WaitUntil([&] { return IsReady(m_end); });
}

}  // namespace Korvex3Sync::tests::support
