#include "korvexctl/system/Signals.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <thread>
#include <utility>

#include "korvexctl/ExitCodes.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr char kInterrupted = 'i';
constexpr char kEnd = 'e';

// A signal handler reaches nothing else than what stands here.
std::atomic<int> s_signals{0};
std::atomic<int> s_writeEnd{-1};
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void OnSignal(int) {
    const int before = errno;
    if (s_signals.fetch_add(1) > 0) {
        ::_exit(static_cast<int>(ExitCode::Interrupted));
    }
    [[maybe_unused]] const ssize_t written = ::write(s_writeEnd.load(), &kInterrupted, 1);
    errno = before;
}

}  // namespace

struct InterruptWatch::State {
    std::array<int, 2> pipe{-1, -1};
    struct sigaction oldInterrupt {};
    struct sigaction oldTerminate {};
    std::thread thread;
};

InterruptWatch::InterruptWatch(std::function<void()> onInterrupt)
    : m_state(std::make_unique<State>()) {
    if (::pipe(m_state->pipe.data()) != 0) {
        throw std::system_error(errno, std::generic_category(), "pipe");
    }
    s_signals = 0;
    s_writeEnd = m_state->pipe[1];
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
    ::sigaction(SIGINT, &action, &m_state->oldInterrupt);
    ::sigaction(SIGTERM, &action, &m_state->oldTerminate);
}

InterruptWatch::~InterruptWatch() {
    ::sigaction(SIGINT, &m_state->oldInterrupt, nullptr);
    ::sigaction(SIGTERM, &m_state->oldTerminate, nullptr);
    [[maybe_unused]] const ssize_t written = ::write(m_state->pipe[1], &kEnd, 1);
    m_state->thread.join();
    s_writeEnd = -1;
    ::close(m_state->pipe[0]);
    ::close(m_state->pipe[1]);
}

void TurnWriteSignalsIntoErrors() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace Korvex3Sync::korvexctl
