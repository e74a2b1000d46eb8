#pragma once

#include <string>
#include <vector>

#include "Korvex3Sync/Statistics.h"
#include "virtual_head/cameras/HeadCounts.h"

namespace Korvex3Sync::tests::soak {

/// What the head did with its triggers between two moments, with nothing connected at either.
virtual_head::HeadCounts Between(const virtual_head::HeadCounts& before,
                                 const virtual_head::HeadCounts& after);

/// Follows every frame of one connection from the head, which knows what it made, through the
/// library, which says what it delivered and lost. One line for each place where the sums differ:
/// there a frame was lost in silence, or counted twice.
std::vector<std::string> Differences(const virtual_head::HeadCounts& head,
                                     const ScanStatistics& library);

/// Adds the figures of one connection to those of all.
void Add(const ScanStatistics& connection, ScanStatistics& all);

/// All figures with their names, one a line.
std::string Text(const ScanStatistics& statistics);

}  // namespace Korvex3Sync::tests::soak
