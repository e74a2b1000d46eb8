#pragma once

#include <QTimer>

#include "platform/os/CriticalSection.h"

namespace Korvex3Sync {

/// Decides when image silence means that the service is gone. The single-shot timer
/// m_pCallbackTimer runs on the worker thread; starts and stops reach it as queued calls of the
/// client's slot StartScanCallBackTimer.
///
/// A stop counts from the moment the application asks for it, not from its turn in the queue:
/// notices and timeouts that were on their way at that moment have no effect.
class ScanWatchdog {
public:
    /// The client has the slots StartScanCallBackTimer(bool) and OnCallbackTimerOut().
    explicit ScanWatchdog(QObject& client);

    QTimer& Timer() { return *m_pCallbackTimer; }

    /// An image set is expected within the next interval. Any thread.
    void QueueStart();

    /// A call that makes the images stop, if it succeeds.
    class Stop {
    public:
        explicit Stop(ScanWatchdog& watchdog);
        /// Without Confirm, what was held back takes place now.
        ~Stop();
        Stop(const Stop&) = delete;
        Stop& operator=(const Stop&) = delete;
        /// The call has succeeded: queues the stop.
        void Confirm();

    private:
        ScanWatchdog& m_watchdog;
        bool m_confirmed = false;
    };

    // Worker thread.

    void Start(int milliseconds) { m_pCallbackTimer->start(milliseconds); }
    void StopNow();
    /// False if the timeout does not count, or not yet.
    bool TimedOut();

private:
    void CallSlot(bool start);

    QObject& m_client;
    QTimer* const m_pCallbackTimer;
    os::Mutex m_mutex;
    int m_stopsAsked KORVEX_GUARDED_BY(m_mutex) = 0;   // calls that run
    int m_stopsQueued KORVEX_GUARDED_BY(m_mutex) = 0;  // on their way to the worker thread
    bool m_startHeldBack KORVEX_GUARDED_BY(m_mutex) = false;
    bool m_timeoutHeldBack KORVEX_GUARDED_BY(m_mutex) = false;
};

}  // namespace Korvex3Sync
