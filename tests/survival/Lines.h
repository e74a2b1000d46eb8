#pragma once

#include <chrono>
#include <cinttypes>
#include <cstdint>
#include <cstdio>

#include "Korvex3Sync/Status.h"

/// What applications say to the test that started them (ApplicationProcess.h). A time is that of
/// the steady clock in nanoseconds, which all processes of the machine share.
namespace Korvex3Sync::tests {

inline std::int64_t Nanoseconds() {
    return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// One line at once: lines of several threads do not mix.
template <class... Values>
void Say(const char* format, Values... values) {
    std::printf(format, values...);
    std::fflush(stdout);
}

/// Makes a call and says its status and its time.
template <class Call>
RETSTATUS Timed(const char* name, Call call) {
    const std::int64_t begin = Nanoseconds();
    const RETSTATUS status = call();
    const std::int64_t end = Nanoseconds();
    constexpr double kNanosecondsOfMillisecond = 1e6;
    Say("call %" PRId64 " %s %d %.3f\n", end, name, static_cast<int>(status),
        static_cast<double>(end - begin) / kNanosecondsOfMillisecond);
    return status;
}

}  // namespace Korvex3Sync::tests
