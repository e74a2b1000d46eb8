#include "service/ReconnectConfiguration.h"

#include <QSettings>

#include "service/ServiceLog.h"

namespace Korvex3Sync {

ReconnectConfiguration ReconnectConfiguration::Read(const QString& file) {
    ReconnectConfiguration read;
    QSettings settings(file, QSettings::IniFormat);
    settings.beginGroup("Reconnect");
    const auto take = [&settings](const char* key, int& value) {
        value = settings.value(key, value).toInt();
    };
    take("MaxReconnectCount", read.m_iMaxReconnectCount);
    take("CheckVideoPeriod", read.m_iCheckVideoPeriod);
    take("WaitTimeAfterRestartDevice", read.m_iWaitTimeAfterRestartDevice);
    take("ReconnectPeriod", read.m_iReconnectPeriod);
    take("RestartProcessWaitTime", read.m_iRestartProcessWaitTime);
    take("GetVideoPeriod", read.m_iGetVideoPeriod);
    take("GetMaxNumOnStatusOffline", read.m_iMaxNumOnStatusOffline);
    take("StatusTimeOut", read.m_iStatusTimeOut);
    take("StatusTimeOutNoticeMaxNum", read.m_iStatusTimeOutNoticeMaxNum);
    KORVEX_LOG(kServiceLog) << "DeviceService Reconnect config, m_iMaxReconnectCount: "
                            << read.m_iMaxReconnectCount
                            << "  m_iCheckVideoPeriod: " << read.m_iCheckVideoPeriod
                            << "  m_iWaitTimeAfterRestartDevice: "
                            << read.m_iWaitTimeAfterRestartDevice
                            << "  m_iReconnectPeriod: " << read.m_iReconnectPeriod
                            << "  m_iRestartProcessWaitTime: " << read.m_iRestartProcessWaitTime
                            << "  m_iGetVideoPeriod: " << read.m_iGetVideoPeriod
                            << " m_iMaxNumOnStatusOffline: " << read.m_iMaxNumOnStatusOffline
                            << " m_iStatusTimeOut: " << read.m_iStatusTimeOut
                            << " m_iStatusTimeOutNoticeMaxNum: "
                            << read.m_iStatusTimeOutNoticeMaxNum;
    return read;
}

}  // namespace Korvex3Sync
