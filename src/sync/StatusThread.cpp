#include <chrono>

#include "platform/include/zr3DHandiDLPdev.h"
#include "platform/os/Log.h"
#include "platform/os/Print.h"
#include "sync/ManagerSync.h"

namespace Korvex3Sync {
namespace {

constexpr auto& kLog = kManagerSyncLog;

constexpr std::chrono::milliseconds kPollPeriod{200};
constexpr std::chrono::milliseconds kPausedPeriod{300};
/// Polls without a call after each change of the callback.
constexpr int kSkippedPolls = 4;
constexpr unsigned char kNoAnswer = 0xFF;

}  // namespace

RETSTATUS IManagerSync::SetStatusCallBackFunction(StatusCallBackFunction callback, void* context) {
    KORVEX_LOG(kLog) << "pCallBack=" << reinterpret_cast<const void*>(callback)
                     << " m_bContinueStatusThread=" << m_bContinueStatusThread;
    const auto store = [&] {
        os::CriticalSectionGuard status(m_csStatus);
        m_pStatusContext = context;
        m_nStatusSkipCount = kSkippedPolls;
        return std::exchange(m_pStatusCallBack, callback);
    };
    if (m_bContinueStatusThread) {
        store();
        if (callback == nullptr || context == nullptr) {
            KORVEX_LOG(kLog) << "SetStatusCallBackFunction close heart beat.";
            EnableHeartbeat(false);
        } else {
            KORVEX_LOG(kLog) << "SetStatusCallBackFunction EnableHeartbeat 1.";
            EnableHeartbeat(true);
        }
        return STATUS_SUCCESS;
    }
    {
        const DeviceGuard device(this, m_csDevice);
        const StatusCallBackFunction previous = store();
        m_bContinueStatusThread = true;
        if (!m_hStatusThread.Start([this] { StatusThreadFun(); })) {
            m_bContinueStatusThread = false;
            os::CriticalSectionGuard status(m_csStatus);
            m_pStatusCallBack = previous;
            return STATUS_FAILED;
        }
        KORVEX_LOG(kLog) << "SetStatusCallBackFunction EnableHeartbeat.";
    }
    EnableHeartbeat(true);
    return STATUS_SUCCESS;
}

RETSTATUS IManagerSync::EnableHeartbeat(bool enable) {
    return BoardOperation(
        DeviceLost::Ignored, [&](RememberedSettings& r) { r.heartbeatEnabled = enable; },
        [&](void* h) { return zr3DHandiDLPdev::zr3DEnableHeartbeat(h, enable); });
}

RETSTATUS IManagerSync::QueryCurrentStatus(unsigned char& first, unsigned char& second) {
    void* const handle = m_hDevice;
    if (handle == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    return zr3DHandiDLPdev::zr3DQueryCurrentStatus(handle, first, second) ? STATUS_SUCCESS
                                                                          : STATUS_FAILED;
}

unsigned IManagerSync::StatusThreadFun() {
    while (m_bContinueStatusThread) {
        while (m_bPauseStatusCheck && m_bContinueStatusThread) {
            m_statusWake.Wait(kPausedPeriod);
        }
        {
            os::CriticalSectionGuard device(m_csDevice);
            if (!m_bContinueStatusThread) {
                os::Print("Leave status check lock!!!!!!!!!!!!!!!!!\n");
                KORVEX_LOG(kLog) << "StatusThreadFun m_bContinueStatusThread="
                                 << m_bContinueStatusThread;
                break;
            }
            PollStatus();
        }
        m_statusWake.Wait(kPollPeriod);
    }
    KORVEX_LOG(kLog) << "Exit Status Thread";
    os::Print("Exit Status Thread\n");
    return 0;
}

void IManagerSync::PollStatus() {
    {
        os::CriticalSectionGuard status(m_csStatus);
        if (m_pStatusCallBack == nullptr) {
            return;
        }
    }
    unsigned char first = 0;
    unsigned char second = 0;
    m_bDeviceLost = QueryCurrentStatus(first, second) != STATUS_SUCCESS;
    if (m_bDeviceLost) {
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
        LOG(ERROR) << "a status callback threw";
    }
}

}  // namespace Korvex3Sync
