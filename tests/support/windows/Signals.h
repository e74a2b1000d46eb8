#pragma once

#include "platform/os/windows/System.h"

namespace Korvex3Sync::tests {

/// Has a process of this user handle an event as if its console sent it: this one, or a child that
/// is in the process group of its parent. A process without a console gets none from the system.
void SendConsoleEvent(HANDLE process, int signal);

}  // namespace Korvex3Sync::tests
