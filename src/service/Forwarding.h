#pragma once

#include <array>
#include <string>

#include "service/ServiceLog.h"
#include "service/zr3DHandiSyncQT.h"

namespace Korvex3Sync {

// The frames of the forwarded operations, for the files that implement them.

template <class Call>
RETSTATUS zr3DHandiSyncQT::CallService(const Service& service, Call call) {
    os::CriticalSectionGuard guard(m_csService);
    // The id is read here, because a reconnect that the call has waited for changes it.
    return call(*service, m_llDeviceId.load());
}

template <class... Values>
RETSTATUS zr3DHandiSyncQT::Set(const Setting<Values...>& setting, const Values&... values) {
    const Service service = ConnectedService();
    if (service == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    m_settings.Store(setting.cached, values...);
    KORVEX_LOG(kServiceLog) << LogText(setting.before, values...);
    const RETSTATUS status = CallService(service, [&](SyncInterface& link, qint64 id) {
        return (link.*setting.call)(id, values...);
    });
    KORVEX_LOG(kServiceLog) << setting.after << status;
    return status;
}

template <class... Values>
RETSTATUS zr3DHandiSyncQT::Get(const Query<Values...>& query, Values&... values) {
    const Service service = ConnectedService();
    if (service == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    const RETSTATUS status = CallService(
        service, [&](SyncInterface& link, qint64 id) { return (link.*query.call)(id, values...); });
    KORVEX_LOG(kServiceLog) << LogText(query.after, status, values...);
    return status;
}

template <class... Values>
RETSTATUS zr3DHandiSyncQT::GetOf(const CameraQuery<Values...>& query, int camOrder,
                                 Values&... values) {
    const Service service = ConnectedService();
    if (service == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    KORVEX_LOG(kServiceLog) << query.before << camOrder;
    const RETSTATUS status = CallService(service, [&](SyncInterface& link, qint64 id) {
        return (link.*query.call)(id, camOrder, values...);
    });
    KORVEX_LOG(kServiceLog) << LogText(query.after, status, values...);
    return status;
}

}  // namespace Korvex3Sync
