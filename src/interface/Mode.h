#pragma once

namespace Korvex3Sync {

class zr3DHandiSyncQT;

// Process-wide state of the interface. It is zero-initialised and never destroyed.

/// Whether service mode is on.
bool ServiceMode();
void SetServiceMode(bool on);

/// The service client; null if there is none.
zr3DHandiSyncQT* ServiceClient();
/// Call it once, with a client that lives as long as the process.
void SetServiceClient(zr3DHandiSyncQT* client);

/// Called at each end of a direct connection; nothing reads the marker.
void ResetConnectionMarker();

}  // namespace Korvex3Sync
