#include "camera/PhysicalCameraThread.h"

#include "camera/CameraLog.h"
#include "platform/os/Log.h"
#include "platform/os/Print.h"

namespace Korvex3Sync {
namespace {}  // namespace

CPhysicalCameraThread::CPhysicalCameraThread(PhysicalCameraThreadListener* listener)
    : m_listener(listener) {}

CPhysicalCameraThread::~CPhysicalCameraThread() {
    KORVEX_LOG(kPhysicalCameraThreadLog) << "~CPhysicalCameraThread 0";
    CloseCamera();
    DestroyInstance();
    KORVEX_LOG(kPhysicalCameraThreadLog) << "~CPhysicalCameraThread 1";
    {
        // Waits until nobody holds the locks before they are destroyed.
        PauseLockGuard pause(m_csPause);
        os::CriticalSectionGuard snap(m_csSnap);
    }
    KORVEX_LOG(kPhysicalCameraThreadLog) << "~CPhysicalCameraThread 2";
}

bool CPhysicalCameraThread::InializeCamera(const char* const& devId) {
    int result = -1;
    if (devId != nullptr) {
        KORVEX_LOG(kPhysicalCameraThreadLog) << "InializeCamera devId=" << devId;
        const PauseJoinGuard pause(m_csPause);
        result = zr3DCamera::CreateCamera(m_camera, devId);
    } else {
        KORVEX_LOG(kPhysicalCameraThreadLog) << "InializeCamera ";
        if (m_serial.size() >= 3) {
            const PauseJoinGuard pause(m_csPause);
            result = zr3DCamera::CreateCamera(m_camera, m_serial.c_str());
        }
    }
    KORVEX_LOG(kPhysicalCameraThreadLog) << "InializeCamera retValue=" << result;
    return result == 0;
}

void CPhysicalCameraThread::DestroyInstance() {
    const PauseJoinGuard pause(m_csPause);
    if (m_camera != nullptr) {
        zr3DCamera::ReleaseCamera(m_camera);
        m_camera = nullptr;
    }
}

bool CPhysicalCameraThread::ReleaseCamera() {
    KORVEX_LOG(kPhysicalCameraThreadLog) << "ReleaseCamera 0";
    DestroyInstance();
    KORVEX_LOG(kPhysicalCameraThreadLog) << "ReleaseCamera 1";
    return true;
}

bool CPhysicalCameraThread::OpenCamera(const char* const& serial, const int& width,
                                       const int& height) {
    KORVEX_LOG(kPhysicalCameraThreadLog) << "OpenCamera";
    if (m_bRun) {
        StopThread();
    }
    if (m_bOpen) {
        CloseCamera();
    }
    if (zr3DCamera::OpenCamera(Camera(), serial, width, height) != 0) {
        KORVEX_LOG(kPhysicalCameraThreadLog) << "OpenCamera failed";
        return false;
    }
    zr3DCamera::ZR_IMG_FORMAT mode{};
    zr3DCamera::GetColorMode(Camera(), mode);  // part of every open; result unused
    m_bOpen = true;
    m_serial = serial != nullptr ? serial : "";
    m_width = width;
    m_height = height;
    KORVEX_LOG(kPhysicalCameraThreadLog) << "OpenCamera m_bOpen=" << m_bOpen;
    return m_bOpen;
}

bool CPhysicalCameraThread::ReOpenCamera() {
    if (Camera() == nullptr) {
        return false;
    }
    KORVEX_LOG(kPhysicalCameraThreadLog) << "ReOpenCamera m_camera=" << Camera();
    zr3DCamera::CloseCamera(Camera());
    const int opened = zr3DCamera::OpenCamera(Camera(), m_serial.c_str(), m_width, m_height);
    KORVEX_LOG(kPhysicalCameraThreadLog) << "ReOpenCamera nRet=" << opened;
    if (opened != 0) {
        return false;
    }
    int deviceType = 0;
    const bool known = zr3DCamera::GetDeviceType(Camera(), deviceType);
    KORVEX_LOG(kPhysicalCameraThreadLog)
        << "ReOpenCamera ret= " << known << "deviceType= " << deviceType;
    if (!known || deviceType <= 0) {
        KORVEX_LOG(kPhysicalCameraThreadLog) << "ReOpenCamera failed";
        return false;
    }
    return true;
}

bool CPhysicalCameraThread::CloseCamera() {
    KORVEX_LOG(kPhysicalCameraThreadLog)
        << "Call Function CPhysicalCameraThread::CloseCamera() CloseCamera 0";
    StopThread();
    if (Camera() != nullptr && m_bOpen) {
        zr3DCamera::CloseCamera(Camera());
    }
    KORVEX_LOG(kPhysicalCameraThreadLog) << "CloseCamera 1";
    m_bOpen = false;
    PauseLockGuard pause(m_csPause);
    m_image = nullptr;
    m_callback = nullptr;
    m_callbackContext = nullptr;
    return true;
}

bool CPhysicalCameraThread::StartCamera() {
    KORVEX_LOG(kPhysicalCameraThreadLog) << "StartCamera ";
    const bool started = zr3DCamera::StartCamera(Camera(), 0.0) == 0;
    KORVEX_LOG(kPhysicalCameraThreadLog) << (started ? "StartCamera ok" : "StartCamera failed");
    return started;
}

void CPhysicalCameraThread::SetCameraID(int id) {
    if (Camera() == nullptr) {
        return;
    }
    m_cameraID = id;
    KORVEX_LOG(kPhysicalCameraThreadLog) << "SetCameraID m_cameraID=" << m_cameraID;
}

void CPhysicalCameraThread::SetScanCallBackFunction(CameraFrameCallback callback, void* context) {
    if (m_cameraID < 0) {
        return;
    }
    KORVEX_LOG(kPhysicalCameraThreadLog) << "SetScanCallBackFunction 0";
    os::Print("Before Set ScanCallBackFunction\n");
    {
        PauseLockGuard pause(m_csPause);
        m_callback = callback;
        m_callbackContext = context;
    }
    KORVEX_LOG(kPhysicalCameraThreadLog) << "SetScanCallBackFunction 1";
    os::Print("After Set ScanCallBackFunction\n");
}

}  // namespace Korvex3Sync
