#include "korvexctl/cli/Signals.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/cli/Outcome.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr char kInterrupted = 'i';
constexpr char kEnd = 'e';
constexpr const char* kEnded = "interrupted";

// A signal handler reaches nothing else than what stands here. The pipe is made once and never
// closed: a handler may be on its way to it at any time.
std::atomic<int> s_signals{0};
std::atomic<int> s_writeEnd{-1};
static_assert(std::atomic<int>::is_always_lock_free);

std::atomic<bool> s_toEnd{false};

struct Handled {
    int signal;
    struct sigaction former;
};

extern "C" void OnSignal(int signal) {
    const int before = errno;
    if (s_signals.fetch_add(1) > 0) {
        if (signal == SIGHUP) {
            // A terminal that goes sends it more than once, and nobody presses it.
            return;
        }
        ::_exit(static_cast<int>(ExitCode::Interrupted));
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
        // Whoever started the program with nohup wants it to outlive the terminal.
        if (signal == SIGHUP && former.sa_handler == SIG_IGN) {
            continue;
        }
        ::sigaction(signal, &action, nullptr);
        taken.push_back({signal, former});
    }
    return taken;
}

/// All watches of the process, and the thread that tells the newest one of a signal.
class Watches {
public:
    static Watches& OfThisProcess() {
        static Watches watches;
        return watches;
    }

    void Add(const std::function<void()>& call) {
        const std::lock_guard lock(m_mutex);
        if (m_calls.empty()) {
            Begin();
        } else if (m_told) {
            throw CommandError(ExitCode::Interrupted, kEnded);
        }
        m_calls.push_back(&call);
    }

    /// Waits for a call that is under way.
    void RemoveNewest() {
        {
            const std::lock_guard lock(m_mutex);
            m_calls.pop_back();
            if (!m_calls.empty()) {
                return;
            }
        }
        End();
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

    void Begin() {
        s_signals = 0;
        m_told = false;
        m_thread = std::thread([this] { Tell(); });
        m_taken = TakeSignals();
    }

    void End() {
        for (const Handled& handled : m_taken) {
            ::sigaction(handled.signal, &handled.former, nullptr);
        }
        [[maybe_unused]] const ssize_t written = ::write(s_writeEnd, &kEnd, 1);
        m_thread.join();
    }

    void Tell() {
        char what = kEnd;
        while (true) {
            const ssize_t got = ::read(m_readEnd, &what, 1);
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got != 1 || what == kEnd) {
                return;
            }
            const std::lock_guard lock(m_mutex);
            // What a handler wrote after the watches of before had ended tells nobody anything.
            if (!m_calls.empty() && s_signals > 0 && !m_told) {
                m_told = true;
                (*m_calls.back())();
            }
        }
    }

    std::mutex m_mutex;
    std::vector<const std::function<void()>*> m_calls;
    bool m_told = false;
    int m_readEnd = -1;
    std::vector<Handled> m_taken;
    std::thread m_thread;
};

}  // namespace

InterruptWatch::InterruptWatch(std::function<void()> onInterrupt)
    : m_onInterrupt(std::move(onInterrupt)) {
    Watches::OfThisProcess().Add(m_onInterrupt);
}

InterruptWatch::~InterruptWatch() {
    Watches::OfThisProcess().RemoveNewest();
}

EndingOnInterrupt::EndingOnInterrupt()
    : m_watch([] {
          s_toEnd = true;
          Say("interrupted; ends when what is under way is done; a second time ends at once");
      }) {}

EndingOnInterrupt::~EndingOnInterrupt() {
    s_toEnd = false;
}

bool ToldToEnd() {
    return s_toEnd;
}

void EndIfInterrupted() {
    if (ToldToEnd()) {
        throw CommandError(ExitCode::Interrupted, kEnded);
    }
}

void TurnWriteSignalsIntoErrors() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace Korvex3Sync::korvexctl
