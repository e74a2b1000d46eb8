#include <sys/ioctl.h>
#include <unistd.h>

#include "platform/os/StandardOutput.h"

namespace Korvex3Sync::os {

std::optional<std::size_t> TerminalColumns() {
    struct winsize size {};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) {
        return std::nullopt;
    }
    return size.ws_col;
}

void ShowUtf8() {}

bool StandardErrorTakesEscapes() {
    return ::isatty(STDERR_FILENO) == 1;
}

}  // namespace Korvex3Sync::os
