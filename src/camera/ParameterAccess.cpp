#include "camera/CameraLog.h"
#include "camera/PhysicalCameraThread.h"
#include "platform/os/Log.h"

namespace Korvex3Sync {
namespace {

constexpr zr3DCamera::CAMPARAM kOrderExposureGain{5};

}  // namespace

bool CPhysicalCameraThread::GetResolution(int& width, int& height) {
    return Camera() != nullptr && zr3DCamera::GetResolution(Camera(), width, height) == 0;
}

bool CPhysicalCameraThread::SetExposure(const long& time) {
    if (Camera() == nullptr) {
        return false;
    }
    Yield yield(*this);
    return zr3DCamera::SetExposureTime(Camera(), time) == 0;
}

bool CPhysicalCameraThread::GetExposure(long& time) {
    if (Camera() == nullptr) {
        return false;
    }
    Yield yield(*this);
    zr3DCamera::GetExposureTime(Camera(), time);
    return true;
}

bool CPhysicalCameraThread::SetGain(int gain) {
    if (Camera() == nullptr) {
        return false;
    }
    Yield yield(*this);
    return zr3DCamera::SetGain(Camera(), gain) == 0;
}

bool CPhysicalCameraThread::GetGain(int& gain) {
    int value = 0;
    if (Camera() == nullptr || zr3DCamera::GetGain(Camera(), value) != 0) {
        return false;
    }
    gain = value;
    return true;
}

bool CPhysicalCameraThread::SetCameraParam5(int value) {
    if (Camera() == nullptr) {
        return false;
    }
    Yield yield(*this);
    return zr3DCamera::SetCameraIntParam(Camera(), kOrderExposureGain, value);
}

bool CPhysicalCameraThread::GetDeviceTotal(int& total) {
    return Camera() != nullptr && zr3DCamera::GetDeviceTotal(Camera(), total) == 0;
}

std::string CPhysicalCameraThread::GetSerial() {
    std::string serial;
    if (zr3DCamera::GetSerialNo(Camera(), serial) != 0) {
        serial.clear();
    }
    return serial;
}

bool CPhysicalCameraThread::ResetCameraState() {
    KORVEX_LOG(kPhysicalCameraThreadLog) << "ResetCameraState 0";
    const bool reset = zr3DCamera::ResetCameraState(Camera());
    KORVEX_LOG(kPhysicalCameraThreadLog) << "ResetCameraState ret=" << reset;
    return reset;
}

}  // namespace Korvex3Sync
