#pragma once

namespace Korvex3Sync::os {

/// For tests: while it exists, nominal times take `factor` times as long.
///
/// In builds with KORVEX_CHECKS, platform/os is one shared library, so the scale applies to all
/// libraries of the process. The environment variable KORVEX_TIME_SCALE sets the scale of a program
/// from its start (a number above 0; any other text ends the program with a message). A release
/// build links platform/os statically, ignores the variable, and scales only the copy that the
/// caller links.
///
/// Nominal times are the library's sleeps, poll periods and waits with a limit, the reply limit of
/// the board (500 ms), the limit of a snap (100 ms), and all times of the virtual head's faults.
/// The trigger period and the exposures of the virtual head are real time, like those of a device:
/// the trigger has the same rate under any scale.
class ScopedTimeScale {
public:
    explicit ScopedTimeScale(double factor);
    ~ScopedTimeScale();
    ScopedTimeScale(const ScopedTimeScale&) = delete;
    ScopedTimeScale& operator=(const ScopedTimeScale&) = delete;

private:
    double m_previous;
};

}  // namespace Korvex3Sync::os
