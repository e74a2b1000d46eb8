#pragma once

#include <Korvex3Sync/Statistics.h>

#include <cstdint>
#include <span>

#include "device_service/core/SetDelivery.h"
#include "platform/link/wire/Messages.h"

namespace Korvex3Sync::device_service {

/// One figure of direct mode.
struct Figure {
    const char* name;  // of the member
    std::uint64_t ScanStatistics::*member;
    bool loss;  // counts something that did not reach the scan callback, or not completely
};
/// All of them, in the order of their declaration.
std::span<const Figure> Figures();

/// What the client gets for a set in shared memory: nothing, nothing, "GrayImage" or "ColorImage",
/// the names of the segments, the size of an image in units of 1280 x 1024 bytes (1), the number of
/// the set since the connect, the sets that were not written, the notices that were not sent, the
/// figures of direct mode, and whether more sets follow.
link::Signal SignalOf(const SetNotice& notice);

/// What the client gets for a status: the name of the service, nothing, the first byte as decimal
/// text, the second byte.
link::Signal SignalOf(unsigned char statusA, unsigned char statusB);

}  // namespace Korvex3Sync::device_service
