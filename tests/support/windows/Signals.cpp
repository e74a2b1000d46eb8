#include "support/Signals.h"

#include "support/windows/Signals.h"

#include <gtest/gtest.h>

namespace Korvex3Sync::tests {

void SendConsoleEvent(HANDLE process, int signal) {
    const DWORD event = signal == kInterrupt   ? CTRL_C_EVENT
                        : signal == kTerminate ? CTRL_BREAK_EVENT
                                               : CTRL_CLOSE_EVENT;
    // The function that the system itself begins a thread of the process with. It is at the same
    // place in every process.
    const FARPROC routine = ::GetProcAddress(::GetModuleHandleW(L"kernelbase"), "CtrlRoutine");
    const os::Handle thread(::CreateRemoteThread(
        process, nullptr, 0,
        reinterpret_cast<LPTHREAD_START_ROUTINE>(reinterpret_cast<void*>(routine)),
        reinterpret_cast<void*>(static_cast<std::uintptr_t>(event)), 0, nullptr));
    EXPECT_TRUE(thread);
    // A program may stay in its handler when the console closes, because it would end afterwards.
    if (event != CTRL_CLOSE_EVENT) {
        ::WaitForSingleObject(thread.get(), INFINITE);
    }
}

void RaiseSignal(int signal) {
    SendConsoleEvent(::GetCurrentProcess(), signal);
}

}  // namespace Korvex3Sync::tests
