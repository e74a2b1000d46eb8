#pragma once

#include "device_service/core/DeviceOwner.h"
#include "platform/link/Server.h"

namespace Korvex3Sync::device_service {

/// Lets the server carry out every operation of the interface by the exported function of the same
/// name. Status and results are those of direct mode. An id that is not the one of the client's
/// device gives 6.
void AddOperations(link::Server& server, DeviceOwner& owner);

}  // namespace Korvex3Sync::device_service
