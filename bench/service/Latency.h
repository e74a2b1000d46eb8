#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

namespace bench {

/// Nanoseconds of the steady clock, which all processes of the machine share.
inline std::int64_t Nanoseconds() {
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Prints "what: p50, p99, longest" of durations in nanoseconds, as microseconds.
void PrintLatency(const char* what, std::vector<std::int64_t> nanoseconds);

/// The median, in microseconds.
double MedianMicroseconds(std::vector<std::int64_t> nanoseconds);

}  // namespace bench
