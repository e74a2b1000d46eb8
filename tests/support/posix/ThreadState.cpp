#include "support/ThreadState.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "support/BlockingCall.h"

namespace Korvex3Sync::tests::support {

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
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

}  // namespace Korvex3Sync::tests::support
