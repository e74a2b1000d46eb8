#pragma once

#include <string>
#include <vector>

#include "Korvex3Sync/Statistics.h"
#include "virtual_head/cameras/HeadCounts.h"

namespace Korvex3Sync::tests::soak {

/// What the head did with its triggers between two moments, with nothing connected at either.
virtual_head::HeadCounts Between(const virtual_head::HeadCounts& before,
                                 const virtual_head::HeadCounts& after);

/// Compares what the head made with what the library delivered and lost, for every frame of one
/// connection. Returns one line for each place where the sums differ: there a frame was lost
/// without a count, or counted twice.
std::vector<std::string> Differences(const virtual_head::HeadCounts& head,
                                     const ScanStatistics& library);

/// Adds the figures of one connection to those of all.
void Add(const ScanStatistics& connection, ScanStatistics& all);

/// All figures with their names, one per line.
std::string Text(const ScanStatistics& statistics);

}  // namespace Korvex3Sync::tests::soak
