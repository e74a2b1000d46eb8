#pragma once

#include <string>

namespace Korvex3Sync::tests {

/// What asks a process to end, with the numbers of these signals on Debian. On Windows they are
/// Ctrl-C, Ctrl-Break and the closing of the console.
inline constexpr int kInterrupt = 2;
inline constexpr int kTerminate = 15;
inline constexpr int kHangUp = 1;

/// "SIGINT".
inline std::string SignalName(int signal) {
    return signal == kInterrupt ? "SIGINT" : signal == kTerminate ? "SIGTERM" : "SIGHUP";
}

/// Sends this process a signal.
void RaiseSignal(int signal);

}  // namespace Korvex3Sync::tests
