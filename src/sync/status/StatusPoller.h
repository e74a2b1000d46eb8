#pragma once

#include <atomic>

#include "Korvex3Sync/Status.h"
#include "Korvex3Sync/Types.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Event.h"
#include "platform/os/Thread.h"
#include "sync/board/BoardSession.h"

namespace Korvex3Sync {

/// Polls the state of the board on a thread of its own and reports it to the status callback, which
/// runs with the device lock of the connection and m_csStatus held, taken in this order.
class StatusPoller {
public:
    StatusPoller(os::CriticalSection& device, BoardSession& board);
    /// Ends the status thread.
    ~StatusPoller();
    StatusPoller(const StatusPoller&) = delete;
    StatusPoller& operator=(const StatusPoller&) = delete;

    /// Starts the status thread at the first call and switches the heartbeat: 7, or 0 without a
    /// thread. The first call must not run beside another.
    RETSTATUS SetStatusCallBackFunction(StatusCallBackFunction callback, void* context);
    /// Ends the status thread, after the callback that it may be running. For the end of the
    /// connection.
    void Stop();

    /// Keeps the status thread away from the board until as many `Unpark` came as `Park`.
    void Park();
    /// Whether this was the last one.
    bool Unpark();

private:
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
    std::atomic<bool> m_bPauseStatusCheck{false};  // while m_parked is not 0
    std::atomic<bool> m_bContinueStatusThread{false};
    os::Event m_statusWake;  // ends the status thread's waits
    os::Thread m_hStatusThread;
};

}  // namespace Korvex3Sync
