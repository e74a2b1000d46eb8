#include "service/ScanWatchdog.h"

namespace Korvex3Sync {

ScanWatchdog::ScanWatchdog(QObject& client)
    : m_client(client), m_pCallbackTimer(new QTimer(&client)) {}

void ScanWatchdog::CallSlot(bool start) {
    QMetaObject::invokeMethod(&m_client, "StartScanCallBackTimer", Qt::QueuedConnection,
                              Q_ARG(bool, start));
}

void ScanWatchdog::QueueStart() {
    // Queued with the mutex held, so that no stop comes between the decision and the queue.
    os::MutexGuard guard(m_mutex);
    if (m_stopsAsked + m_stopsQueued > 0) {
        m_startHeldBack = true;
    } else {
        CallSlot(true);
    }
}

ScanWatchdog::Stop::Stop(ScanWatchdog& watchdog) : m_watchdog(watchdog) {
    os::MutexGuard guard(m_watchdog.m_mutex);
    ++m_watchdog.m_stopsAsked;
}

void ScanWatchdog::Stop::Confirm() {
    os::MutexGuard guard(m_watchdog.m_mutex);
    --m_watchdog.m_stopsAsked;
    ++m_watchdog.m_stopsQueued;
    m_watchdog.CallSlot(false);
    m_confirmed = true;
}

ScanWatchdog::Stop::~Stop() {
    if (m_confirmed) {
        return;
    }
    os::MutexGuard guard(m_watchdog.m_mutex);
    if (--m_watchdog.m_stopsAsked + m_watchdog.m_stopsQueued > 0) {
        return;
    }
    if (m_watchdog.m_startHeldBack) {
        m_watchdog.CallSlot(true);
    } else if (m_watchdog.m_timeoutHeldBack) {
        QMetaObject::invokeMethod(&m_watchdog.m_client, "OnCallbackTimerOut", Qt::QueuedConnection);
    }
    m_watchdog.m_timeoutHeldBack = false;
    m_watchdog.m_startHeldBack = false;
}

void ScanWatchdog::StopNow() {
    m_pCallbackTimer->stop();
    os::MutexGuard guard(m_mutex);
    if (m_stopsQueued > 0) {
        --m_stopsQueued;
    }
    m_startHeldBack = false;
    m_timeoutHeldBack = false;
}

bool ScanWatchdog::TimedOut() {
    os::MutexGuard guard(m_mutex);
    if (m_stopsAsked + m_stopsQueued > 0) {
        m_timeoutHeldBack = true;
        return false;
    }
    return true;
}

}  // namespace Korvex3Sync
