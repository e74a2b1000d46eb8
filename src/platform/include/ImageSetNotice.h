#pragma once

#include <array>
#include <cstdint>

#include "Korvex3Sync/Statistics.h"

// The notice of an image set, as SyncInterface::sendCallback carries it: what the service writes
// and the client reads.

namespace Korvex3Sync::notice {

/// The elements of its list. 0 and 1 are empty.
enum Element : int {
    kKind = 2,      ///< "GrayImage" for two images, any other text for three
    kSegments = 3,  ///< names of the segments, one for each image
    kFrames = 4,    ///< size of an image, in units of 1280 x 1024 bytes
    // A service of another make may leave out what follows.
    kNumber = 5,      ///< number of the set, from 1 at the connect
    kNotWritten = 6,  ///< sets so far that were not written
    kNotSent = 7,     ///< notices so far that were not sent
    kFigures = 8,     ///< kDirectModeFigures, before this set counts as delivered
    kMoreFollow = 9,  ///< false for the last sets of a scan
    kDevice = 10,     ///< id of the device that took the set
    kElements = 11
};

/// One figure of direct mode.
struct Figure {
    const char* name;  // of the member
    std::uint64_t ScanStatistics::*member;
    bool loss;  // counts something that did not reach the scan callback, or not completely
};

/// All of them, in the order of their declaration.
inline constexpr std::array<Figure, 19> kDirectModeFigures{{
    {"framesAccepted", &ScanStatistics::framesAccepted, false},
    {"setsDelivered", &ScanStatistics::setsDelivered, false},
    {"setsWithColor", &ScanStatistics::setsWithColor, false},
    {"setsPending", &ScanStatistics::setsPending, false},
    {"failedSnaps", &ScanStatistics::failedSnaps, false},
    {"refusedFrames", &ScanStatistics::refusedFrames, true},
    {"rejectedGeometry", &ScanStatistics::rejectedGeometry, true},
    {"undecodableFrames", &ScanStatistics::undecodableFrames, true},
    {"unroutedFrames", &ScanStatistics::unroutedFrames, true},
    {"colorWithoutMono", &ScanStatistics::colorWithoutMono, true},
    {"monoWithoutColor", &ScanStatistics::monoWithoutColor, true},
    {"repeatedKeys", &ScanStatistics::repeatedKeys, false},
    {"setsDropped", &ScanStatistics::setsDropped, true},
    {"missingKeys", &ScanStatistics::missingKeys, true},
    {"setsWithoutCallback", &ScanStatistics::setsWithoutCallback, true},
    {"colorForSnapshot", &ScanStatistics::colorForSnapshot, false},
    {"callbackP50Us", &ScanStatistics::callbackP50Us, false},
    {"callbackP99Us", &ScanStatistics::callbackP99Us, false},
    {"callbackLongestUs", &ScanStatistics::callbackLongestUs, false},
}};

/// The figures that only the client of the service has.
inline constexpr std::size_t kServiceModeFigures = 5;
static_assert(sizeof(ScanStatistics) ==
                  (kDirectModeFigures.size() + kServiceModeFigures) * sizeof(std::uint64_t),
              "a figure is missing");

}  // namespace Korvex3Sync::notice
