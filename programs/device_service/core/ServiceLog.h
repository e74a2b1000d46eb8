#pragma once

#include "platform/os/Log.h"

namespace Korvex3Sync::device_service {

/// The source name of the service's log records.
inline constexpr const char* kServiceLog = "ZrSyncService";

}  // namespace Korvex3Sync::device_service
