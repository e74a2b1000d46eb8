#include "support/ThreadState.h"

#include <malloc.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "support/BlockingCall.h"

namespace Korvex3Sync::tests::support {

namespace {

std::size_t EntriesOf(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

}  // namespace

int ThisThread() {
    return static_cast<int>(::syscall(SYS_gettid));
}

// The number of times that the thread has given up the processor of its own accord.
std::string SleepOf(int thread) {
    std::ifstream status("/proc/self/task/" + std::to_string(thread) + "/status");
    bool sleeps = false;
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("State:")) {
            sleeps = line.find('S', line.find(':')) != std::string::npos;
        } else if (line.starts_with("voluntary_ctxt_switches:")) {
            return sleeps ? line : "";
        }
    }
    return "";
}

std::size_t ThreadCount() {
    return EntriesOf("/proc/self/task");
}

std::size_t OpenFiles() {
    return EntriesOf("/proc/self/fd");
}

std::size_t UsedMemory() {
    return ::mallinfo2().uordblks;
}

}  // namespace Korvex3Sync::tests::support
