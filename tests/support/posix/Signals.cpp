#include "support/Signals.h"

#include <csignal>

namespace Korvex3Sync::tests {

static_assert(kInterrupt == SIGINT && kTerminate == SIGTERM && kHangUp == SIGHUP);

void RaiseSignal(int signal) {
    std::raise(signal);
}

}  // namespace Korvex3Sync::tests
