#include "platform/os/InheritedStreams.h"

#include <unistd.h>

namespace Korvex3Sync::os {

void KeepOnlyStreams() {
    // Closed by the start of the program only, because what starts it still uses some of them. A
    // kernel before 5.11 refuses, and the program inherits what it always did.
    ::close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
}

}  // namespace Korvex3Sync::os
