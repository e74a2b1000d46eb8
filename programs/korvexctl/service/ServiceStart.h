#pragma once

#include <string>

namespace Korvex3Sync::korvexctl {

class Output;

/// Starts hub and service, each unless it runs already, and waits until both answer. `virtualHead`
/// as for RequestVirtualHead is what the service gets; empty: what the environment says. Throws
/// CommandError(ServiceFailed) with the reason.
void StartService(const std::string& virtualHead, Output& output);

/// Ends the service, then the hub: asks each to end, and ends one that has not ended after some
/// seconds at once. Throws CommandError(ServiceFailed) if one still runs.
void StopService(Output& output);

}  // namespace Korvex3Sync::korvexctl
