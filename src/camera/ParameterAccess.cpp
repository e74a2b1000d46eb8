#include "camera/PhysicalCameraThread.h"
#include "platform/os/Log.h"

namespace Korvex3Sync {
namespace {

constexpr zr3DCamera::CAMPARAM kOrderExposureGain{5};

}  // namespace

bool CPhysicalCameraThread::GetResolution(int& width, int& height) {
    return m_camera != nullptr && zr3DCamera::GetResolution(m_camera, width, height) == 0;
}

bool CPhysicalCameraThread::SetExposure(const long& time) {
    if (m_camera == nullptr) {
        return false;
    }
    Yield yield(*this);
    return zr3DCamera::SetExposureTime(m_camera, time) == 0;
}

bool CPhysicalCameraThread::GetExposure(long& time) {
    if (m_camera == nullptr) {
        return false;
    }
    Yield yield(*this);
    zr3DCamera::GetExposureTime(m_camera, time);
    return true;
}

bool CPhysicalCameraThread::SetGain(int gain) {
    if (m_camera == nullptr) {
        return false;
    }
    Yield yield(*this);
    return zr3DCamera::SetGain(m_camera, gain) == 0;
}

bool CPhysicalCameraThread::GetGain(int& gain) {
    int value = 0;
    if (m_camera == nullptr || zr3DCamera::GetGain(m_camera, value) != 0) {
        return false;
    }
    gain = value;
    return true;
}

bool CPhysicalCameraThread::SetCameraParam5(int value) {
    if (m_camera == nullptr) {
        return false;
    }
    Yield yield(*this);
    return zr3DCamera::SetCameraIntParam(m_camera, kOrderExposureGain, value);
}

bool CPhysicalCameraThread::GetDeviceTotal(int& total) {
    return m_camera != nullptr && zr3DCamera::GetDeviceTotal(m_camera, total) == 0;
}

std::string CPhysicalCameraThread::GetSerial() {
    std::string serial;
    if (zr3DCamera::GetSerialNo(m_camera, serial) != 0) {
        serial.clear();
    }
    return serial;
}

bool CPhysicalCameraThread::ResetCameraState() {
    KORVEX_LOG(kPhysicalCameraThreadLog) << "ResetCameraState 0";
    const bool reset = zr3DCamera::ResetCameraState(m_camera);
    KORVEX_LOG(kPhysicalCameraThreadLog) << "ResetCameraState ret=" << reset;
    return reset;
}

}  // namespace Korvex3Sync
