#pragma once

#include <atomic>
#include <cstdint>

namespace Korvex3Sync {

/// Counts what the grab threads accepted and lost. Several cameras may share one object. Any thread
/// may read it.
struct GrabCounters {
    std::atomic<std::uint64_t> framesAccepted{0};
    std::atomic<std::uint64_t> failedSnaps{0};
    std::atomic<std::uint64_t> refusedFrames{0};  // included in failedSnaps
    std::atomic<std::uint64_t> rejectedGeometry{0};
};

}  // namespace Korvex3Sync
