#include "platform/os/Process.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

namespace Korvex3Sync::os {

long CurrentProcess() {
    return ::getpid();
}

void BecomeBackgroundProcess() {
    // Fails for the leader of a process group, which only a shell starts.
    ::setsid();
    std::fflush(stdout);
    const int nothing = ::open("/dev/null", O_RDWR);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        ::dup2(nothing, standard);
    }
    if (nothing > STDERR_FILENO) {
        ::close(nothing);
    }
}

}  // namespace Korvex3Sync::os
