#pragma once

namespace Korvex3Sync {

/// The source name of every log record of a connection, whichever part writes it.
inline constexpr char kManagerSyncLog[] = "sync/ManagerSync";

}  // namespace Korvex3Sync
