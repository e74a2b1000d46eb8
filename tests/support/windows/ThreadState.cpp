#include "support/ThreadState.h"

#include "platform/os/windows/System.h"

#include <tlhelp32.h>

#include "support/BlockingCall.h"

namespace Korvex3Sync::tests::support {

int ThisThread() {
    return static_cast<int>(::GetCurrentThreadId());
}

// The time that the thread has run. The system does not say whether it is asleep.
std::string SleepOf(int thread) {
    const os::Handle opened(
        ::OpenThread(THREAD_QUERY_LIMITED_INFORMATION, FALSE, static_cast<DWORD>(thread)));
    FILETIME created{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    if (!opened || ::GetThreadTimes(opened.get(), &created, &ended, &kernel, &user) == 0) {
        return "";
    }
    return std::to_string(kernel.dwLowDateTime) + " " + std::to_string(user.dwLowDateTime);
}

std::size_t ThreadCount() {
    const os::Handle all = os::Opened(::CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    THREADENTRY32 entry{};
    entry.dwSize = sizeof(entry);
    std::size_t count = 0;
    for (BOOL more = all ? ::Thread32First(all.get(), &entry) : FALSE; more != 0;
         more = ::Thread32Next(all.get(), &entry)) {
        count += entry.th32OwnerProcessID == ::GetCurrentProcessId() ? 1 : 0;
    }
    return count;
}

}  // namespace Korvex3Sync::tests::support
