#pragma once

#include <cstdint>

namespace Korvex3Sync::tests::soak {

struct Options {
    int seconds = 30;
    std::uint64_t seed = 0;
};

// Each returns the exit code of the program: 0, or 1 with a report on standard error.

/// In direct mode, with faults of the virtual head.
int SoakDirectMode(const Options& options);
/// In service mode: services and hubs are killed and stopped. Needs a QCoreApplication, and a
/// process namespace of its own, because the library ends services by name.
int SoakServiceMode(const Options& options);

}  // namespace Korvex3Sync::tests::soak
