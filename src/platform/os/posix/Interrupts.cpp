#include "platform/os/Interrupts.h"

#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <vector>

#include "platform/os/Descriptors.h"
#include "platform/os/InterruptWatch.h"

namespace Korvex3Sync::os {

namespace {

constexpr char kInterrupted = 'i';
constexpr char kEnd = 'e';
constexpr std::array kSignals{SIGINT, SIGTERM, SIGHUP};

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

// InterruptWatch calls TakeInterrupts and ReturnInterrupts in turn.
std::vector<Handled> s_taken;

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

/// The read end of the pipe.
int ReadEnd() {
    static const int readEnd = [] {
        std::array<int, 2> pipe{-1, -1};
        if (!MakePipe(pipe)) {
            throw std::system_error(LastError(), "pipe");
        }
        s_writeEnd = pipe[1];
        return pipe[0];
    }();
    return readEnd;
}

}  // namespace

void TakeInterrupts(int exitCode) {
    ReadEnd();
    s_interrupts = 0;
    s_exitCode = exitCode;
    struct sigaction action {};
    action.sa_handler = OnSignal;
    action.sa_flags = SA_RESTART;
    ::sigemptyset(&action.sa_mask);
    for (const int signal : kSignals) {
        struct sigaction former {};
        ::sigaction(signal, nullptr, &former);
        // A program that was started with nohup must outlive the terminal.
        if (signal == SIGHUP && former.sa_handler == SIG_IGN) {
            continue;
        }
        ::sigaction(signal, &action, nullptr);
        s_taken.push_back({signal, former});
    }
}

void ReturnInterrupts() {
    for (const Handled& handled : s_taken) {
        ::sigaction(handled.signal, &handled.former, nullptr);
    }
    s_taken.clear();
}

bool Interrupted() {
    return s_interrupts > 0;
}

bool WaitForInterrupt() {
    // While a handler runs, the system gives the next signal to another thread. Under the thread
    // sanitizer it would be handled in this one only when it no longer reads, which is too late.
    sigset_t signals;
    ::sigemptyset(&signals);
    for (const int signal : kSignals) {
        ::sigaddset(&signals, signal);
    }
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    char what = kEnd;
    return ReadDescriptor(ReadEnd(), &what, 1) == 1 && what == kInterrupted;
}

void EndWaitForInterrupt() {
    WriteDescriptor(s_writeEnd, &kEnd, 1);
}

void TurnWriteSignalsIntoErrors() {
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace Korvex3Sync::os
