#include "platform/os/Interrupts.h"

#include <atomic>

#include "platform/os/InterruptWatch.h"
#include "platform/os/windows/System.h"

namespace Korvex3Sync::os {

namespace {

std::atomic<int> s_interrupts{0};
std::atomic<int> s_exitCode{0};
std::atomic<bool> s_ended{false};

/// Each signal ends one wait.
HANDLE Wake() {
    static const HANDLE wake = ::CreateSemaphoreW(nullptr, 0, MAXLONG, nullptr);
    return wake;
}

BOOL WINAPI OnControl(DWORD event) {
    if (s_interrupts.fetch_add(1) > 0) {
        if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
            // The console closes or the user logs off: that is no second request.
            return TRUE;
        }
        ::TerminateProcess(::GetCurrentProcess(), static_cast<UINT>(s_exitCode.load()));
    }
    ::ReleaseSemaphore(Wake(), 1, nullptr);
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        // The system ends the process when this returns, or after its own limit.
        ::Sleep(INFINITE);
    }
    return TRUE;
}

}  // namespace

void TakeInterrupts(int exitCode) {
    Wake();
    s_interrupts = 0;
    s_ended = false;
    s_exitCode = exitCode;
    ::SetConsoleCtrlHandler(OnControl, TRUE);
}

void ReturnInterrupts() {
    ::SetConsoleCtrlHandler(OnControl, FALSE);
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
