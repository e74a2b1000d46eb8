#pragma once

#include <QList>
#include <QVariant>

#include <optional>

#include "Korvex3Sync/Types.h"
#include "platform/os/CriticalSection.h"

namespace Korvex3Sync {

/// A status message of the service.
struct ServiceStatus {
    unsigned char status = 0;
    unsigned char value = 0;
};

/// Reads a status message. Nothing if it only says that the service is connected, or if it is
/// malformed.
std::optional<ServiceStatus> ReadStatusMessage(const QList<QVariant>& list);

/// The status callback of the application. It runs with m_csStatusCallBack held, so it may replace
/// itself, but must not wait for another thread that replaces it.
class StatusDelivery {
public:
    /// Waits for a running callback. Any thread.
    void Set(StatusCallBackFunction callback, void* context);
    /// Calls the callback, if there is one with a context; false if not. Worker thread.
    bool Deliver(const ServiceStatus& status);

private:
    os::CriticalSection m_csStatusCallBack;
    StatusCallBackFunction m_pStatusCallBack KORVEX_GUARDED_BY(m_csStatusCallBack) = nullptr;
    void* m_pStatusContext KORVEX_GUARDED_BY(m_csStatusCallBack) = nullptr;
};

}  // namespace Korvex3Sync
