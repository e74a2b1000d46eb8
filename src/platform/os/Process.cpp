#include "platform/os/Process.h"

#include <unistd.h>

namespace Korvex3Sync::os {

long CurrentProcess() {
    return ::getpid();
}

}  // namespace Korvex3Sync::os
