#pragma once

#include <atomic>
#include <cstdint>

namespace Korvex3Sync {

/// What grab threads took and lost. Several cameras may count into one object; any thread may read
/// it.
struct GrabCounters {
    std::atomic<std::uint64_t> framesAccepted{0};
    std::atomic<std::uint64_t> failedSnaps{0};
    std::atomic<std::uint64_t> refusedFrames{0};  // of the failed snaps
    std::atomic<std::uint64_t> rejectedGeometry{0};
};

}  // namespace Korvex3Sync
