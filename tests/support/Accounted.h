#pragma once

#include <cstdint>

#include "Korvex3Sync/Statistics.h"

namespace Korvex3Sync::tests::support {

/// The triggers that the figures of a connection account for, as Statistics.h sums them up.
inline std::uint64_t AccountedTriggers(const Korvex3Sync::ScanStatistics& s) {
    return s.setsDelivered - s.repeatedKeys + s.missingKeys + s.setsWithoutCallback +
           s.setsDropped + s.setsPending;
}

}  // namespace Korvex3Sync::tests::support
