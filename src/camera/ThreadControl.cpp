#include "camera/CameraLog.h"
#include "camera/PhysicalCameraThread.h"
#include "platform/os/Log.h"

namespace Korvex3Sync {
namespace {}  // namespace

bool CPhysicalCameraThread::StartThread() {
    KORVEX_LOG(kPhysicalCameraThreadLog) << "StartThread m_bOpen=" << m_bOpen;
    if (!m_bOpen) {
        return false;
    }
    if (m_hThread.Started()) {
        return true;
    }
    m_stopped.Reset();
    m_bRun = true;
    m_bRun = m_hThread.Start([this] { GrabLoop(); });
    return m_bRun;
}

bool CPhysicalCameraThread::StopThread() {
    KORVEX_LOG(kPhysicalCameraThreadLog) << "StopThread m_hThread=" << m_hThread.Handle();
    if (m_hThread.Started()) {
        m_bYield = true;
        m_bRun = false;
        m_stopped.Set();
        KORVEX_LOG(kPhysicalCameraThreadLog) << "WaitForSingleObject ";
        m_hThread.Join();
        KORVEX_LOG(kPhysicalCameraThreadLog) << "WaitForSingleObject return";
        m_bYield = false;
        zr3DCamera::UnlockOthers(Camera());
    }
    KORVEX_LOG(kPhysicalCameraThreadLog) << "StopThread end";
    return true;
}

void CPhysicalCameraThread::PauseThread() {
    KORVEX_LOG(kPhysicalCameraThreadLog)
        << "PauseThread m_hThread=" << m_hThread.Handle() << "m_bPaused=" << m_csPause.Paused();
    if (m_hThread.Started() && !m_csPause.Paused()) {
        Yield yield(*this);
        m_csPause.BeginPause();
    }
    KORVEX_LOG(kPhysicalCameraThreadLog) << "PauseThread end";
}

void CPhysicalCameraThread::ResumeThread() {
    KORVEX_LOG(kPhysicalCameraThreadLog)
        << "ResumeThread m_hThread=" << m_hThread.Handle() << "m_bPaused=" << m_csPause.Paused();
    if (m_hThread.Started() && m_csPause.Paused()) {
        Yield yield(*this);
        m_csPause.EndPause();
    }
    KORVEX_LOG(kPhysicalCameraThreadLog) << "ResumeThread end";
}

void CPhysicalCameraThread::ResetStatusToInitialize() {
    KORVEX_LOG(kPhysicalCameraThreadLog) << "ResetStatusToInitialize 0";
    m_csPause.EndPause();
    KORVEX_LOG(kPhysicalCameraThreadLog) << "ResetStatusToInitialize 1";
    m_csSnap.LeaveIfOwner();
    KORVEX_LOG(kPhysicalCameraThreadLog) << "ResetStatusToInitialize 2";
}

}  // namespace Korvex3Sync
