#pragma once

namespace Korvex3Sync {

class zr3DHandiSyncQT;

// Process-wide state of the interface, zero when the library is loaded and never torn down.

/// True after service mode was switched on.
bool ServiceMode();
void SetServiceMode(bool on);

/// The one service client; null while none was made.
zr3DHandiSyncQT* ServiceClient();
/// To be called once with a client, which lives as long as the process.
void SetServiceClient(zr3DHandiSyncQT* client);

/// Reset by each end of a direct connection; nothing reads it.
void ResetConnectionMarker();

}  // namespace Korvex3Sync
