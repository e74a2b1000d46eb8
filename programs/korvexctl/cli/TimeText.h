#pragma once

#include <chrono>
#include <string>

namespace Korvex3Sync::korvexctl {

inline constexpr double kMillisecondsPerSecond = 1000;

/// "2026-11-21T09:04:51.120Z"
std::string TimeText(std::chrono::system_clock::time_point time);

}  // namespace Korvex3Sync::korvexctl
