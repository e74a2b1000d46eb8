#pragma once

#include <atomic>

#include "Korvex3Sync/Status.h"
#include "Korvex3Sync/Types.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Event.h"
#include "platform/os/Thread.h"
#include "sync/board/BoardSession.h"

namespace Korvex3Sync {

/// Polls the state of the board on its own thread and reports it to the status callback. The
/// callback runs with the device lock of the connection and m_csStatus held, taken in this order.
class StatusPoller {
public:
    StatusPoller(os::CriticalSection& device, BoardSession& board);
    /// Ends the status thread.
    ~StatusPoller();
    StatusPoller(const StatusPoller&) = delete;
    StatusPoller& operator=(const StatusPoller&) = delete;

    /// Starts the status thread in the first call and switches the heartbeat on or off: 7, or 0 if
    /// the thread does not start. Any thread, also for the first call.
    RETSTATUS SetStatusCallBackFunction(StatusCallBackFunction callback, void* context);
    /// Ends the status thread; waits for a running callback. For the end of the connection.
    void Stop();

    /// Stops polling until `Unpark` has been called as often as `Park`.
    void Park();
    /// True if this call ended the parking.
    bool Unpark();

private:
    enum class Start { Done, WasRunning, Failed };

    /// Starts the status thread with this callback, unless it runs already.
    Start StartWith(StatusCallBackFunction callback, void* context);
    /// Sets the callback and gives the one before.
    StatusCallBackFunction Store(StatusCallBackFunction callback, void* context);
    unsigned StatusThreadFun();
    void PollStatus() KORVEX_REQUIRES(m_csDevice);

    os::CriticalSection& m_csDevice;
    BoardSession& m_board;
    os::CriticalSection m_csStatus;
    StatusCallBackFunction m_pStatusCallBack KORVEX_GUARDED_BY(m_csStatus) = nullptr;
    void* m_pStatusContext KORVEX_GUARDED_BY(m_csStatus) = nullptr;
    int m_nStatusSkipCount KORVEX_GUARDED_BY(m_csStatus) = 0;

    os::Mutex m_parkMutex;
    int m_parked KORVEX_GUARDED_BY(m_parkMutex) = 0;
    std::atomic<bool> m_bPauseStatusCheck{false};  // true while m_parked > 0
    std::atomic<bool> m_bContinueStatusThread{false};
    os::Event m_statusWake;  // ends the status thread's waits
    os::Thread m_hStatusThread;
};

}  // namespace Korvex3Sync
