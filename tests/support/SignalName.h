#pragma once

#include <cstring>
#include <string>

namespace Korvex3Sync::tests::support {

/// The name of a signal: "SIGINT".
inline std::string SignalName(int signal) {
    return std::string("SIG") + ::sigabbrev_np(signal);
}

}  // namespace Korvex3Sync::tests::support
