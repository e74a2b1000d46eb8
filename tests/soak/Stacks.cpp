#include "soak/Stacks.h"

#include <execinfo.h>
#include <semaphore.h>
#include <signal.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <string>

namespace Korvex3Sync::tests::soak {
namespace {

constexpr int kMostFrames = 64;
constexpr int kAskSignal = SIGUSR1;
constexpr int kLongestPrintSeconds = 5;

sem_t g_printed;

void PrintOwnStack(int) {
    std::array<void*, kMostFrames> frames{};
    const int count = backtrace(frames.data(), kMostFrames);
    backtrace_symbols_fd(frames.data(), count, STDERR_FILENO);
    sem_post(&g_printed);
}

/// Waits for one stack; a thread that ended meanwhile prints none.
void WaitPrinted() {
    timespec until{};
    clock_gettime(CLOCK_REALTIME, &until);
    until.tv_sec += kLongestPrintSeconds;
    sem_timedwait(&g_printed, &until);
}

}  // namespace

void PrintAllStacks() {
    sem_init(&g_printed, 0, 0);
    struct sigaction action {};
    action.sa_handler = PrintOwnStack;
    sigaction(kAskSignal, &action, nullptr);
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
        const int thread = std::stoi(entry.path().filename().string());
        std::fprintf(stderr, "thread %d\n", thread);
        if (syscall(SYS_tgkill, getpid(), thread, kAskSignal) == 0) {
            WaitPrinted();
        }
    }
}

}  // namespace Korvex3Sync::tests::soak
