#pragma once

#include <QString>

namespace Korvex3Sync {

/// How the client watches the service and reconnects: the group "Reconnect" of the configuration
/// file. A missing file or key gives the value below, a value that is not a whole number gives 0.
struct ReconnectConfiguration {
    int m_iMaxReconnectCount = 5;  ///< attempts before the device is restarted; -1: no limit
    int m_iCheckVideoPeriod = 7;   ///< only logged
    int m_iWaitTimeAfterRestartDevice = 30;  ///< only logged
    int m_iReconnectPeriod = 10;             ///< seconds until a failed reconnect is retried
    int m_iRestartProcessWaitTime = 5;       ///< seconds without an image set until a reconnect
    int m_iGetVideoPeriod = 50;              ///< only logged
    int m_iMaxNumOnStatusOffline = 12;       ///< key "GetMaxNumOnStatusOffline"; only logged
    int m_iStatusTimeOut = 2;                ///< period of the status watchdog, in 100 ms
    int m_iStatusTimeOutNoticeMaxNum = 12;   ///< notices of lost status, at most

    /// Reads a file and logs the values.
    static ReconnectConfiguration Read(const QString& file);
};

}  // namespace Korvex3Sync
