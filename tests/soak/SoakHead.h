#pragma once

#include <mutex>
#include <shared_mutex>

#include "Korvex3Sync/Korvex3Sync.h"

namespace Korvex3Sync::tests::soak {

/// The one connection that everybody uses, and who may use it when.
///
/// Every call on the handle is made with `using_` shared; connecting and disconnecting need it
/// alone. Calls that end a connection to the devices, or take a snapshot, take `turn` as well: two
/// of them never run beside one another.
struct SoakHead {
    std::shared_mutex using_;
    std::mutex turn;
    void* handle = nullptr;

    /// With `using_` alone. Sets both callbacks when connected.
    RETSTATUS Connect();
    void Disconnect();

    /// Sets the callback that counts, or with `on` false none.
    static void SetScanCallback(void* const& handle, bool on, bool withContext = true);
    static void SetStatusCallback(void* const& handle, bool on, bool withContext = true);

    /// How often the callbacks were called, since the program began.
    static unsigned long Sets();
    static unsigned long Statuses();
};

}  // namespace Korvex3Sync::tests::soak
