#pragma once

#include <string>

namespace Korvex3Sync::korvexctl {

class Output;

/// The environment variable that requests a simulated head.
inline constexpr const char* kHeadVariable = "KORVEX_VIRTUAL_HEAD";
inline constexpr const char* kDefaultHead = "default";

/// The value of the variable for a process whose working folder is another one. `asked`: as for
/// RequestVirtualHead; empty: what the environment says.
std::string HeadOfService(const std::string& asked);

/// Starts hub and service, each unless it runs already, and waits until both answer. `virtualHead`
/// as for RequestVirtualHead is what the service gets; empty: what the environment says. Throws
/// CommandError(ServiceFailed) with the reason.
void StartService(const std::string& virtualHead, Output& output);

/// Ends the service, then the hub: asks each to end, and ends one that has not ended after some
/// seconds at once. Throws CommandError(ServiceFailed) if one still runs.
void StopService(Output& output);

}  // namespace Korvex3Sync::korvexctl
