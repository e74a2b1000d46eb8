#include "platform/os/Interrupts.h"

#include <atomic>

#include "platform/os/InterruptWatch.h"
#include "platform/os/windows/System.h"

namespace Korvex3Sync::os {

namespace {

std::atomic<bool> s_taken{false};
std::atomic<int> s_interrupts{0};
std::atomic<int> s_exitCode{0};
std::atomic<bool> s_ended{false};
/// Threads of the system that wait because the console closes.
std::atomic<LONG> s_closing{0};

/// Each signal ends one wait.
HANDLE Wake() {
    static const HANDLE wake = ::CreateSemaphoreW(nullptr, 0, MAXLONG, nullptr);
    return wake;
}

/// Ends the wait of one thread that closes.
HANDLE Resume() {
    static const HANDLE resume = ::CreateSemaphoreW(nullptr, 0, MAXLONG, nullptr);
    return resume;
}

BOOL WINAPI OnControl(DWORD event) {
    if (!s_taken) {
        return FALSE;
    }
    // Otherwise the console closes or the user logs off, which is no second request.
    const bool asked = event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
    if (s_interrupts.fetch_add(1) == 0) {
        ::ReleaseSemaphore(Wake(), 1, nullptr);
    } else if (asked) {
        ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(s_exitCode.load()));
    }
    if (!asked) {
        // The system ends the process when this returns, or after its own limit. A process that
        // takes interrupts again has done what it had to do.
        ++s_closing;
        ::WaitForSingleObject(Resume(), INFINITE);
    }
    return TRUE;
}

}  // namespace

void TakeInterrupts(int exitCode) {
    Wake();
    s_interrupts = 0;
    s_ended = false;
    s_exitCode = exitCode;
    if (const LONG closing = s_closing.exchange(0); closing > 0) {
        ::ReleaseSemaphore(Resume(), closing, nullptr);
    }
    // For good: the system changes its list only when no handler runs, and one may wait.
    [[maybe_unused]] static const BOOL once = ::SetConsoleCtrlHandler(OnControl, TRUE);
    s_taken = true;
}

void ReturnInterrupts() {
    s_taken = false;
}

bool Interrupted() {
    return s_interrupts > 0;
}

bool WaitForInterrupt() {
    ::WaitForSingleObject(Wake(), INFINITE);
    return !s_ended;
}

void EndWaitForInterrupt() {
    s_ended = true;
    ::ReleaseSemaphore(Wake(), 1, nullptr);
}

// Writing never ends a process here.
void TurnWriteSignalsIntoErrors() {}

}  // namespace Korvex3Sync::os
