#pragma once

#include <chrono>

namespace Korvex3Sync::tests {

/// How long a test waits, in real time, for what has to happen. Much longer than it takes on a busy
/// machine; only a failing test waits this long.
inline constexpr std::chrono::milliseconds kDeadline{60000};

}  // namespace Korvex3Sync::tests
