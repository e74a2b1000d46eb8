#pragma once

namespace Korvex3Sync {

// A scan callback runs with its grab thread's locks held, so a board operation in it can wait for a
// reconnection or a close that itself waits for this grab thread. Builds with KORVEX_CHECKS tell
// about it with one ERROR record; other builds do nothing here.

/// Marks, while it lives, that this thread runs a scan callback of `manager`.
class InScanCallback {
public:
    explicit InScanCallback(const void* manager);
    ~InScanCallback();
    InScanCallback(const InScanCallback&) = delete;
    InScanCallback& operator=(const InScanCallback&) = delete;

private:
    [[maybe_unused]] const void* m_previous = nullptr;
};

/// To be called where an operation of `manager` takes the device lock.
void CheckNotInScanCallback(const void* manager);

}  // namespace Korvex3Sync
