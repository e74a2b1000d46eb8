#include "support/ThreadState.h"

#include "platform/os/windows/System.h"

#include <gtest/gtest.h>
#include <malloc.h>
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

std::size_t OpenFiles() {
    DWORD count = 0;
    EXPECT_NE(::GetProcessHandleCount(::GetCurrentProcess(), &count), 0);
    return count;
}

std::size_t UsedMemory() {
    std::size_t used = 0;
    _HEAPINFO block{};
    int result = ::_heapwalk(&block);
    for (; result == _HEAPOK; result = ::_heapwalk(&block)) {
        used += block._useflag == _USEDENTRY ? block._size : 0;
    }
    EXPECT_EQ(result, _HEAPEND);
    return used;
}

}  // namespace Korvex3Sync::tests::support
