#pragma once

namespace Korvex3Sync::os {

/// Puts off a cancellation of the calling thread (`pthread_cancel`) for a scope. Where the system
/// knows none, it does nothing.
class CancellationOff {
public:
    CancellationOff();
    ~CancellationOff();
    CancellationOff(const CancellationOff&) = delete;
    CancellationOff& operator=(const CancellationOff&) = delete;

private:
    int m_before = 0;
};

}  // namespace Korvex3Sync::os
