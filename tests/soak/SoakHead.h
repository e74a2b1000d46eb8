#pragma once

#include <mutex>
#include <shared_mutex>

#include "Korvex3Sync/Korvex3Sync.h"

namespace Korvex3Sync::tests::soak {

/// The connection that all threads use, and the rules for using it.
///
/// Every call on the handle holds `using_` shared; connecting and disconnecting hold it
/// exclusively. Calls that end the connection to the devices or take a snapshot also hold `turn`,
/// so two of them never run at the same time.
struct SoakHead {
    std::shared_mutex using_;
    std::mutex turn;
    void* handle = nullptr;

    /// Requires `using_` exclusively. Sets both callbacks if connected.
    RETSTATUS Connect();
    void Disconnect();

    /// Sets the counting callback, or none if `on` is false.
    static void SetScanCallback(void* const& handle, bool on, bool withContext = true);
    static void SetStatusCallback(void* const& handle, bool on, bool withContext = true);

    /// How often the callbacks were called, since the program began.
    static unsigned long Sets();
    static unsigned long Statuses();
};

}  // namespace Korvex3Sync::tests::soak
