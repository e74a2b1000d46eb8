#pragma once

#include <Korvex3Sync/Statistics.h>

#include <cstdint>
#include <span>

namespace Korvex3Sync::korvexctl {

/// A place on the way of a frame where something can get lost.
struct LossPlace {
    const char* key;
    std::uint64_t ScanStatistics::*count;
    const char* words;  // what was lost there
    const char* cure;   // what to do about it
};

/// All of them, in the order of the way. A snap that failed is none: an idle camera does that.
std::span<const LossPlace> LossPlaces();

}  // namespace Korvex3Sync::korvexctl
