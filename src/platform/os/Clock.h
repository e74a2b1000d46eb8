#pragma once

#include <chrono>

namespace Korvex3Sync::os {

/// Sleeps for a nominal time. All sleeps and timed waits of this project go through this file or
/// Event.h, so that tests can speed up time (TimeScale.h).
void SleepFor(std::chrono::milliseconds nominal);

/// The real duration that a nominal one takes now.
std::chrono::steady_clock::duration Scaled(std::chrono::milliseconds nominal);

/// The same for the timers and limits of other libraries, which count whole milliseconds in an int:
/// rounded up, 0 for a negative time.
int ScaledMilliseconds(std::chrono::milliseconds nominal);

}  // namespace Korvex3Sync::os
