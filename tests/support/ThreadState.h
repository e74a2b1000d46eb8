#pragma once

#include <cstddef>
#include <string>

namespace Korvex3Sync::tests::support {

/// What changes when a thread of this process runs; empty if it is not asleep now.
std::string SleepOf(int thread);

/// The current number of threads of this process.
std::size_t ThreadCount();

}  // namespace Korvex3Sync::tests::support
