#pragma once

#include <cstddef>
#include <string>

namespace Korvex3Sync::tests::support {

/// What changes when a thread of this process runs; empty if it is not asleep now.
std::string SleepOf(int thread);

/// The current number of threads of this process.
std::size_t ThreadCount();

/// What else this process has now: open descriptors or handles, and memory in bytes. The
/// sanitizers, which have an allocator of their own, look for leaks themselves.
std::size_t OpenFiles();
std::size_t UsedMemory();

}  // namespace Korvex3Sync::tests::support
