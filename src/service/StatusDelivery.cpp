#include "service/StatusDelivery.h"

#include "service/ServiceLog.h"

namespace Korvex3Sync {
namespace {

enum StatusElement : int { kStatusText = 2, kStatusValue = 3, kStatusElements = 4 };

}  // namespace

std::optional<ServiceStatus> ReadStatusMessage(const QList<QVariant>& list) {
    if (list.size() < kStatusElements) {
        return std::nullopt;
    }
    const QString text = list[kStatusText].toString();
    if (text == "Connected") {
        return std::nullopt;
    }
    return ServiceStatus{static_cast<unsigned char>(text.toUInt()),
                         static_cast<unsigned char>(list[kStatusValue].toInt())};
}

void StatusDelivery::Set(StatusCallBackFunction callback, void* context) {
    os::CriticalSectionGuard guard(m_csStatusCallBack);
    m_pStatusContext = context;
    m_pStatusCallBack = callback;
}

bool StatusDelivery::Deliver(const ServiceStatus& status) {
    os::CriticalSectionGuard guard(m_csStatusCallBack);
    if (m_pStatusCallBack == nullptr || m_pStatusContext == nullptr) {
        return false;
    }
    try {
        m_pStatusCallBack(m_pStatusContext, status.status, status.value);
    } catch (...) {
        KORVEX_LOG_ERROR(kServiceLog) << "a status callback threw";
    }
    return true;
}

}  // namespace Korvex3Sync
