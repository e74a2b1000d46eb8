#include "korvexctl/system/Signals.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "korvexctl/ExitCodes.h"
#include "korvexctl/Output.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr char kInterrupted = 'i';
constexpr char kEnd = 'e';

// A signal handler reaches nothing else than what stands here.
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

}  // namespace

struct InterruptWatch::State {
    std::array<int, 2> pipe{-1, -1};
    int formerWriteEnd = -1;
    std::vector<Handled> handled;
    std::thread thread;
};

InterruptWatch::InterruptWatch(std::function<void()> onInterrupt)
    : m_state(std::make_unique<State>()) {
    if (::pipe(m_state->pipe.data()) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    s_signals = 0;
    m_state->formerWriteEnd = s_writeEnd.exchange(m_state->pipe[1]);
    m_state->thread = std::thread([readEnd = m_state->pipe[0], call = std::move(onInterrupt)] {
        char what = kEnd;
        while (true) {
            const ssize_t got = ::read(readEnd, &what, 1);
            if (got < 0 && errno == EINTR) {
                continue;
            }
            if (got != 1 || what == kEnd) {
                return;
            }
            call();
        }
    });
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
        m_state->handled.push_back({signal, former});
    }
}

InterruptWatch::~InterruptWatch() {
    for (const Handled& handled : m_state->handled) {
        ::sigaction(handled.signal, &handled.former, nullptr);
    }
    s_writeEnd = m_state->formerWriteEnd;
    [[maybe_unused]] const ssize_t written = ::write(m_state->pipe[1], &kEnd, 1);
    m_state->thread.join();
    ::close(m_state->pipe[0]);
    ::close(m_state->pipe[1]);
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
        throw CommandError(ExitCode::Interrupted, "interrupted");
    }
}

void TurnWriteSignalsIntoErrors() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace Korvex3Sync::korvexctl
