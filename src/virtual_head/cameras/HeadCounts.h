#pragma once

#include <cstdint>

namespace Korvex3Sync::virtual_head {

/// Where exposures of one kind went. Each is counted once, at the camera instance that was started
/// first of those that were started at that moment; what other instances see is not counted.
///
///     made + repeated = lost + unattended + handed + lostInBuffers + heldBack
///     handed = fetched + dropped + those that wait in the instance
struct FrameCounts {
    std::uint64_t made = 0;           // by the sensors
    std::uint64_t repeated = 0;       // handed a second time (repeat-*)
    std::uint64_t lost = 0;           // by lose-* and camera-stop
    std::uint64_t unattended = 0;     // no camera was started
    std::uint64_t lostInBuffers = 0;  // all buffers of the instance were taken
    std::uint64_t heldBack = 0;       // by a delay, now: it falls again when they go out
    std::uint64_t handed = 0;         // to the instance
    std::uint64_t torn = 0;           // of the handed ones: SnapShot refuses it (tear-*)
    std::uint64_t misSized = 0;       // of the handed ones: with an impossible size (mis-size-*)
    std::uint64_t fetched = 0;        // of the handed ones: SnapShot took it, also to refuse it
    std::uint64_t dropped = 0;  // of the handed ones: by ResetCameraState, closing, unplugging
};

/// What the head did with its triggers since it exists.
///
/// A trigger has a mono exposure in the modes 1, 2, 3 and 6, and one of colour alone in mode 4:
///
///     triggers = keysSkipped + mono.made + colorOnly
struct HeadCounts {
    std::uint64_t triggers = 0;     // skipped ones among them
    std::uint64_t keysSkipped = 0;  // triggers that no camera saw (skip-keys)
    std::uint64_t colorOnly = 0;    // triggers that gave no mono exposure
    std::uint64_t delayed = 0;      // triggers whose exposures were held back by a delay of theirs
    FrameCounts mono;
    FrameCounts color;
};

}  // namespace Korvex3Sync::virtual_head
