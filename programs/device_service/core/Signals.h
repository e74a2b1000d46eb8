#pragma once

#include "device_service/core/SetDelivery.h"
#include "platform/link/wire/Messages.h"

namespace Korvex3Sync::device_service {

/// What the client gets for a set in shared memory (ImageSetNotice.h).
link::Signal SignalOf(const SetNotice& set);

/// What the client gets for a status: the name of the service, nothing, the first byte as decimal
/// text, the second byte.
link::Signal SignalOf(unsigned char statusA, unsigned char statusB);

}  // namespace Korvex3Sync::device_service
