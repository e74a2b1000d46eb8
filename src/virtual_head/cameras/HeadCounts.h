#pragma once

#include <cstdint>

namespace Korvex3Sync::virtual_head {

/// Counts what happened to the exposures of one kind. Each is counted once, at the instance that
/// was started first among those running at that moment. Other instances are not counted.
///
///     made + repeated = lost + unattended + handed + lostInBuffers + heldBack
///     handed = fetched + dropped + those waiting in the instance
struct FrameCounts {
    std::uint64_t made = 0;           // by the sensors
    std::uint64_t repeated = 0;       // handed out twice (repeat-*)
    std::uint64_t lost = 0;           // by lose-* and camera-stop
    std::uint64_t unattended = 0;     // no camera was started
    std::uint64_t lostInBuffers = 0;  // all buffers of the instance were in use
    std::uint64_t heldBack = 0;       // by a delay, at the moment
    std::uint64_t handed = 0;         // to the instance
    std::uint64_t torn = 0;           // of the handed ones: refused by SnapShot (tear-*)
    std::uint64_t misSized = 0;       // of the handed ones: wrong size (mis-size-*)
    std::uint64_t fetched = 0;        // of the handed ones: taken or refused by SnapShot
    std::uint64_t dropped = 0;        // of the handed ones: by reset, close or unplug
};

/// Counts what happened to the triggers since the head was created.
///
/// In the modes 1, 2, 3 and 6 a trigger gives a mono exposure, in mode 4 only a colour one:
///
///     triggers = keysSkipped + mono.made + colorOnly
struct HeadCounts {
    std::uint64_t triggers = 0;     // including skipped ones
    std::uint64_t keysSkipped = 0;  // triggers that no camera saw (skip-keys)
    std::uint64_t colorOnly = 0;    // triggers that gave no mono exposure
    std::uint64_t delayed = 0;      // triggers whose exposures a delay held back
    FrameCounts mono;
    FrameCounts color;
};

}  // namespace Korvex3Sync::virtual_head
