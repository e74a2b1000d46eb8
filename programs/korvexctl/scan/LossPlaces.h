#pragma once

#include <Korvex3Sync/Statistics.h>

#include <cstdint>
#include <span>

namespace Korvex3Sync::korvexctl {

/// A place on the path of a frame where something can get lost.
struct LossPlace {
    const char* key;
    std::uint64_t ScanStatistics::*count;
    const char* words;  // what was lost there
    const char* cure;   // what to do about it
};

/// All of them, in the order of a frame's path. A failed snap is not one: an idle camera has them
/// too.
std::span<const LossPlace> LossPlaces();

}  // namespace Korvex3Sync::korvexctl
