#pragma once

#include <chrono>

namespace Korvex3Sync::os {

/// Sleeps for a nominal time. Every sleep and every wait with a limit of this project goes through
/// this file or Event.h, so that tests can run time faster (TimeScale.h).
void SleepFor(std::chrono::milliseconds nominal);

/// The real duration that a nominal one takes now.
std::chrono::steady_clock::duration Scaled(std::chrono::milliseconds nominal);

}  // namespace Korvex3Sync::os
