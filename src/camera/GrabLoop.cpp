#include <chrono>

#include "camera/CameraLog.h"
#include "camera/ColorMode.h"
#include "camera/PhysicalCameraThread.h"
#include "platform/os/Clock.h"
#include "platform/os/Log.h"
#include "platform/os/Print.h"

namespace Korvex3Sync {
namespace {

/// How long the loop leaves the camera to a caller that needs it.
constexpr std::chrono::milliseconds kYieldTime{10};
/// The time of a snap without a frame. A loop without a camera waits this long instead of spinning.
constexpr std::chrono::milliseconds kSnapLimit{100};
/// Images with at least this width or height are refused.
constexpr int kSizeBound = 2001;
constexpr int kMostChannels = 3;

}  // namespace

void CPhysicalCameraThread::GrabLoop() {
    zr3DCamera::ZR_IMG_FORMAT mode{};
    {
        PauseLockGuard pause(m_csPause);
        os::CriticalSectionGuard snap(m_csSnap);
        zr3DCamera::GetColorMode(m_camera, mode);
    }
    while (m_bRun) {
        bool hasCamera = false;
        {
            PauseLockGuard pause(m_csPause);
            os::CriticalSectionGuard snap(m_csSnap);
            hasCamera = m_camera != nullptr;
            SnapOnce(mode);
        }
        if (m_bYield) {
            os::SleepFor(kYieldTime);
        }
        if (!hasCamera) {
            m_stopped.Wait(kSnapLimit);
        }
    }
    KORVEX_LOG(kPhysicalCameraThreadLog) << "CPhysicalCameraThread::ThreadFun exit";
}

void CPhysicalCameraThread::SnapOnce(zr3DCamera::ZR_IMG_FORMAT mode) {
    const int result = m_camera != nullptr ? zr3DCamera::SnapShot(m_camera, m_image) : -1;
    if (result == 0 && m_image != nullptr) {
        int width = 0;
        int height = 0;
        zr3DCamera::GetResolution(m_camera, width, height);
        Dispatch(width, height, CallbackChannels(mode));
        return;
    }
    ++m_counters->failedSnaps;
    if (result != 0 && m_image != nullptr) {
        // Without a camera, m_image is still the buffer of the last accepted frame.
        m_counters->refusedFrames += m_camera != nullptr ? 1 : 0;
        KORVEX_LOG(kPhysicalCameraThreadLog)
            << "Camera " << m_cameraID << " Snap Failed and data not null. "
            << "ret=" << result;
    }
    m_image = nullptr;
    os::Print("Camera %d Snap Failed\n", m_cameraID);
}

void CPhysicalCameraThread::Dispatch(int width, int height, int channels) {
    const bool accepted = width > 0 && width < kSizeBound && height > 0 && height < kSizeBound &&
                          channels >= 1 && channels <= kMostChannels;
    if (!accepted) {
        ++m_counters->rejectedGeometry;
        KORVEX_LOG(kPhysicalCameraThreadLog) << "Snap image data failed, wrong image data!";
        return;
    }
    ++m_counters->framesAccepted;
    if (m_callback != nullptr) {
        m_callback(m_callbackContext, m_cameraID, m_image, width, height, channels);
    }
}

}  // namespace Korvex3Sync
