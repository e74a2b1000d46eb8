#include "platform/os/InterruptWatch.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "platform/os/CriticalSection.h"

namespace Korvex3Sync::os {

namespace {

constexpr char kInterrupted = 'i';
constexpr char kEnd = 'e';

// The signal handler uses only these. The pipe is created once and never closed, because a handler
// may write to it at any time.
std::atomic<int> s_interrupts{0};
std::atomic<int> s_writeEnd{-1};
std::atomic<int> s_exitCode{0};
static_assert(std::atomic<int>::is_always_lock_free);

struct Handled {
    int signal;
    struct sigaction former;
};

extern "C" void OnSignal(int signal) {
    const int before = errno;
    if (s_interrupts.fetch_add(1) > 0) {
        if (signal == SIGHUP) {
            // A closing terminal may send it more than once, without the user's intention.
            return;
        }
        ::_exit(s_exitCode.load());
    }
    [[maybe_unused]] const ssize_t written = ::write(s_writeEnd.load(), &kInterrupted, 1);
    errno = before;
}

std::vector<Handled> TakeSignals() {
    std::vector<Handled> taken;
    struct sigaction action {};
    action.sa_handler = OnSignal;
    action.sa_flags = SA_RESTART;
    ::sigemptyset(&action.sa_mask);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction former {};
        ::sigaction(signal, nullptr, &former);
        // A program that was started with nohup must outlive the terminal.
        if (signal == SIGHUP && former.sa_handler == SIG_IGN) {
            continue;
        }
        ::sigaction(signal, &action, nullptr);
        taken.push_back({signal, former});
    }
    return taken;
}

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
            s_exitCode = exitCode;
            Begin();
        } else if (m_called) {
            return false;
        }
        m_calls.push_back(&call);
        return true;
    }

    /// Waits for a running call.
    void RemoveNewest() {
        std::vector<Handled> taken;
        std::thread thread;
        {
            const MutexGuard guard(m_mutex);
            m_calls.pop_back();
            if (!m_calls.empty()) {
                return;
            }
            taken.swap(m_taken);
            thread.swap(m_thread);
        }
        for (const Handled& handled : taken) {
            ::sigaction(handled.signal, &handled.former, nullptr);
        }
        [[maybe_unused]] const ssize_t written = ::write(s_writeEnd, &kEnd, 1);
        thread.join();
    }

private:
    Watches() {
        std::array<int, 2> pipe{-1, -1};
        if (::pipe(pipe.data()) != 0) {
            throw std::system_error(errno, std::generic_category(), "pipe");
        }
        m_readEnd = pipe[0];
        s_writeEnd = pipe[1];
    }

    void Begin() KORVEX_REQUIRES(m_mutex) {
        s_interrupts = 0;
        m_called = false;
        m_thread = std::thread([this] { CallOnInterrupts(); });
        m_taken = TakeSignals();
    }

    void CallOnInterrupts() {
        char what = kEnd;
        while (true) {
            const ssize_t got = ::read(m_readEnd, &what, 1);
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got != 1 || what == kEnd) {
                return;
            }
            const MutexGuard guard(m_mutex);
            // A handler may still write after its watches have ended.
            if (!m_calls.empty() && s_interrupts > 0 && !m_called) {
                m_called = true;
                (*m_calls.back())();
            }
        }
    }

    Mutex m_mutex;
    std::vector<const std::function<void()>*> m_calls KORVEX_GUARDED_BY(m_mutex);
    bool m_called KORVEX_GUARDED_BY(m_mutex) = false;
    std::vector<Handled> m_taken KORVEX_GUARDED_BY(m_mutex);
    std::thread m_thread KORVEX_GUARDED_BY(m_mutex);
    int m_readEnd = -1;
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

void TurnWriteSignalsIntoErrors() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace Korvex3Sync::os
