#include "sync/status/StatusPoller.h"

#include <chrono>
#include <utility>

#include "platform/os/Log.h"
#include "platform/os/Print.h"
#include "sync/connection/ManagerLog.h"
#include "sync/connection/ScanCallbackRule.h"

namespace Korvex3Sync {
namespace {

constexpr std::chrono::milliseconds kPollPeriod{200};
constexpr std::chrono::milliseconds kPausedPeriod{300};
/// The number of polls without a callback after each change of the callback.
constexpr int kSkippedPolls = 4;
constexpr unsigned char kNoAnswer = 0xFF;

}  // namespace

StatusPoller::StatusPoller(os::CriticalSection& device, BoardSession& board)
    : m_csDevice(device), m_board(board) {}

StatusPoller::~StatusPoller() {
    Stop();
}

RETSTATUS StatusPoller::SetStatusCallBackFunction(StatusCallBackFunction callback, void* context) {
    KORVEX_LOG(kManagerSyncLog) << "pCallBack=" << reinterpret_cast<const void*>(callback)
                                << " m_bContinueStatusThread=" << m_bContinueStatusThread;
    switch (m_bContinueStatusThread ? Start::WasRunning : StartWith(callback, context)) {
        case Start::Failed:
            return STATUS_FAILED;
        case Start::Done:
            m_board.EnableHeartbeat(true);
            return STATUS_SUCCESS;
        case Start::WasRunning:
            break;
    }
    Store(callback, context);
    if (callback == nullptr || context == nullptr) {
        KORVEX_LOG(kManagerSyncLog) << "SetStatusCallBackFunction close heart beat.";
        m_board.EnableHeartbeat(false);
    } else {
        KORVEX_LOG(kManagerSyncLog) << "SetStatusCallBackFunction EnableHeartbeat 1.";
        m_board.EnableHeartbeat(true);
    }
    return STATUS_SUCCESS;
}

StatusCallBackFunction StatusPoller::Store(StatusCallBackFunction callback, void* context) {
    os::CriticalSectionGuard status(m_csStatus);
    m_pStatusContext = context;
    m_nStatusSkipCount = kSkippedPolls;
    return std::exchange(m_pStatusCallBack, callback);
}

StatusPoller::Start StatusPoller::StartWith(StatusCallBackFunction callback, void* context) {
    const DeviceGuard device(m_csDevice);
    if (m_bContinueStatusThread) {
        return Start::WasRunning;  // of two first calls at the same time this is the second
    }
    const StatusCallBackFunction previous = Store(callback, context);
    m_bContinueStatusThread = true;
    if (!m_hStatusThread.Start([this] { StatusThreadFun(); })) {
        m_bContinueStatusThread = false;
        os::CriticalSectionGuard status(m_csStatus);
        m_pStatusCallBack = previous;
        return Start::Failed;
    }
    KORVEX_LOG(kManagerSyncLog) << "SetStatusCallBackFunction EnableHeartbeat.";
    return Start::Done;
}

void StatusPoller::Stop() {
    if (m_hStatusThread.Started()) {
        m_bContinueStatusThread = false;
        m_statusWake.Set();
        m_hStatusThread.Join();
    }
}

void StatusPoller::Park() {
    os::MutexGuard lock(m_parkMutex);
    ++m_parked;
    m_bPauseStatusCheck = true;
}

bool StatusPoller::Unpark() {
    os::MutexGuard lock(m_parkMutex);
    if (--m_parked > 0) {
        return false;
    }
    m_bPauseStatusCheck = false;
    return true;
}

unsigned StatusPoller::StatusThreadFun() {
    while (m_bContinueStatusThread) {
        while (m_bPauseStatusCheck && m_bContinueStatusThread) {
            m_statusWake.Wait(kPausedPeriod);
        }
        {
            os::CriticalSectionGuard device(m_csDevice);
            if (!m_bContinueStatusThread) {
                os::Print("Leave status check lock!!!!!!!!!!!!!!!!!\n");
                KORVEX_LOG(kManagerSyncLog)
                    << "StatusThreadFun m_bContinueStatusThread=" << m_bContinueStatusThread;
                break;
            }
            PollStatus();
        }
        m_statusWake.Wait(kPollPeriod);
    }
    KORVEX_LOG(kManagerSyncLog) << "Exit Status Thread";
    os::Print("Exit Status Thread\n");
    return 0;
}

void StatusPoller::PollStatus() {
    {
        os::CriticalSectionGuard status(m_csStatus);
        if (m_pStatusCallBack == nullptr) {
            return;
        }
    }
    unsigned char first = 0;
    unsigned char second = 0;
    if (!m_board.PollStatus(first, second)) {
        first = kNoAnswer;
        second = kNoAnswer;
    }
    os::CriticalSectionGuard status(m_csStatus);
    if (m_pStatusCallBack == nullptr) {
        return;
    }
    if (m_nStatusSkipCount != 0) {
        --m_nStatusSkipCount;
        return;
    }
    const void* const context = m_pStatusContext;
    try {
        m_pStatusCallBack(context, second, first);
    } catch (...) {
        KORVEX_LOG_ERROR(kManagerSyncLog) << "a status callback threw";
    }
}

}  // namespace Korvex3Sync
