#pragma once

#include "platform/link/Client.h"
#include "platform/link/HubOperations.h"

namespace Korvex3Sync::link {

// One question to the hub, for programs. Each blocks until the answer, 2 s at most.

/// False without a hub.
bool QueryHub(HubState& state);
/// Asks the hub to end. False without a hub.
bool RequestHubStop();

}  // namespace Korvex3Sync::link
