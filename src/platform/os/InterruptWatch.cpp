#include "platform/os/InterruptWatch.h"

#include <thread>
#include <utility>
#include <vector>

#include "platform/os/CriticalSection.h"
#include "platform/os/Interrupts.h"

namespace Korvex3Sync::os {

namespace {

/// All watches of the process, and the thread that calls the newest one.
class Watches {
public:
    static Watches& OfThisProcess() {
        static Watches watches;
        return watches;
    }

    bool Add(const std::function<void()>& call, int exitCode) {
        const MutexGuard guard(m_mutex);
        if (m_calls.empty()) {
            Begin(exitCode);
        } else if (m_called) {
            return false;
        }
        m_calls.push_back(&call);
        return true;
    }

    /// Waits for a running call.
    void RemoveNewest() {
        std::thread thread;
        {
            const MutexGuard guard(m_mutex);
            m_calls.pop_back();
            if (!m_calls.empty()) {
                return;
            }
            ReturnInterrupts();
            thread.swap(m_thread);
        }
        EndWaitForInterrupt();
        thread.join();
    }

private:
    Watches() = default;

    void Begin(int exitCode) KORVEX_REQUIRES(m_mutex) {
        m_called = false;
        TakeInterrupts(exitCode);
        try {
            m_thread = std::thread([this] { CallOnInterrupts(); });
        } catch (...) {
            ReturnInterrupts();
            throw;
        }
    }

    void CallOnInterrupts() {
        while (WaitForInterrupt()) {
            const MutexGuard guard(m_mutex);
            // One may still arrive after its watches have ended.
            if (!m_calls.empty() && Interrupted() && !m_called) {
                m_called = true;
                (*m_calls.back())();
            }
        }
    }

    Mutex m_mutex;
    std::vector<const std::function<void()>*> m_calls KORVEX_GUARDED_BY(m_mutex);
    bool m_called KORVEX_GUARDED_BY(m_mutex) = false;
    std::thread m_thread KORVEX_GUARDED_BY(m_mutex);
};

}  // namespace

InterruptWatch::InterruptWatch(std::function<void()> onInterrupt, int exitCode)
    : m_onInterrupt(std::move(onInterrupt)),
      m_watches(Watches::OfThisProcess().Add(m_onInterrupt, exitCode)) {}

InterruptWatch::~InterruptWatch() {
    if (m_watches) {
        Watches::OfThisProcess().RemoveNewest();
    }
}

}  // namespace Korvex3Sync::os
