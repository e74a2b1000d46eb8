#include <algorithm>
#include <chrono>

#include "platform/os/Clock.h"
#include "platform/os/Log.h"
#include "platform/os/Print.h"
#include "sync/cameras/CameraSet.h"
#include "sync/cameras/ExposureWord.h"
#include "sync/connection/ManagerLog.h"
#include "sync/connection/ScanCallbackRule.h"

namespace Korvex3Sync {
namespace {

using std::chrono::milliseconds;

/// The time that a camera needs to switch to the selected order.
constexpr milliseconds kSelectTime{20};
/// The result of a query without a camera.
constexpr int kNoValue = -1;

/// Runs the call of a setter, and once more if it fails. The result of the second call is ignored.
template <class Call>
void TryTwice(const char* setter, milliseconds pause, Call call) {
    if (call()) {
        return;
    }
    KORVEX_LOG(kManagerSyncLog) << setter << " first time failed, try again.";
    os::Print("IManagerSync::%s first time failed, try again.************", setter);
    os::SleepFor(pause);
    call();
}

double ReadExposure(CPhysicalCameraThread& camera) {
    long time = 0;
    camera.GetExposure(time);
    return static_cast<double>(time) / kMicrosecondsPerMillisecond;
}

}  // namespace

CPhysicalCameraThread* CameraSet::FirstCamera() const {
    return m_cameras.empty() ? nullptr : m_cameras.front().get();
}

int CameraSet::ChannelCount() const {
    return static_cast<int>(m_cameraChannels.size());
}

RETSTATUS CameraSet::SetCameraExposureAndGain(const int& order, const double& exposure,
                                              const int& gain) {
    const DeviceGuard device(m_csDevice);
    m_remembered.exposures[order] = exposure;
    m_remembered.gains[order] = gain;
    CPhysicalCameraThread* const camera = FirstCamera();
    if (camera == nullptr) {
        return STATUS_FAILED;
    }
    KORVEX_LOG(kManagerSyncLog) << "SetCameraExposureTime camOrder=" << order
                                << " exposureTime=" << exposure << "gain=" << gain;
    const int word = ExposureGainWord(order, exposure, gain);
    TryTwice("SetCameraExposureAndGain", kSelectTime,
             [&] { return camera->SetCameraParam5(word); });
    return STATUS_SUCCESS;
}

RETSTATUS CameraSet::GetCameraExposureAndGain(const int& order, double& exposure, int& gain) {
    const DeviceGuard device(m_csDevice);
    CPhysicalCameraThread* const camera = FirstCamera();
    if (camera == nullptr) {
        return STATUS_SUCCESS;
    }
    camera->SetCameraParam5(SelectionWord(order));
    os::SleepFor(kSelectTime);
    exposure = ReadExposure(*camera);
    camera->SetCameraParam5(SelectionWord(order));
    os::SleepFor(kSelectTime);
    camera->GetGain(gain);
    return STATUS_SUCCESS;
}

RETSTATUS CameraSet::SetExposureTime(const int& order, const double& exposure) {
    const DeviceGuard device(m_csDevice);
    const int microseconds = ExposureMicroseconds(exposure);
    // In microseconds, unlike in the combined setter. This is intended.
    m_remembered.exposures[order] = microseconds;
    CPhysicalCameraThread* const camera = FirstCamera();
    if (camera == nullptr) {
        return STATUS_FAILED;
    }
    camera->SetCameraParam5(order);
    os::SleepFor(kSelectTime);
    KORVEX_LOG(kManagerSyncLog) << "SetCameraExposureTime camOrder=" << order
                                << " exposureTime=" << exposure;
    TryTwice("SetExposureTime", milliseconds{0}, [&] { return camera->SetExposure(microseconds); });
    return STATUS_SUCCESS;
}

RETSTATUS CameraSet::GetExposureTime(const int& order, double& exposure) {
    const DeviceGuard device(m_csDevice);
    // Only here and in SetCameraGain an order equal to the count is accepted. This is intended.
    if (order < 0 || order > ChannelCount()) {
        return STATUS_NOT_CONNECTED;
    }
    CPhysicalCameraThread* const camera = FirstCamera();
    if (camera == nullptr) {
        exposure = kNoValue;
        return STATUS_FAILED;
    }
    camera->SetCameraParam5(order);
    exposure = ReadExposure(*camera);
    return STATUS_SUCCESS;
}

RETSTATUS CameraSet::SetCameraGain(const int& order, const int& gain) {
    const DeviceGuard device(m_csDevice);
    if (order < 0 || order > ChannelCount()) {
        return STATUS_NOT_CONNECTED;
    }
    m_remembered.gains[order] = gain;
    CPhysicalCameraThread* const camera = FirstCamera();
    if (camera == nullptr) {
        return STATUS_FAILED;
    }
    camera->SetCameraParam5(order);
    os::SleepFor(kSelectTime);
    KORVEX_LOG(kManagerSyncLog) << "SetCameraGain camOrder=" << order << " gain=" << gain;
    TryTwice("SetCameraGain", milliseconds{0}, [&] { return camera->SetGain(gain); });
    return STATUS_SUCCESS;
}

RETSTATUS CameraSet::GetCameraGain(const int& order, int& gain) {
    const DeviceGuard device(m_csDevice);
    if (order < 0 || order >= ChannelCount()) {
        return STATUS_NOT_CONNECTED;
    }
    CPhysicalCameraThread* const camera = FirstCamera();
    if (camera == nullptr) {
        gain = kNoValue;
        return STATUS_FAILED;
    }
    camera->SetCameraParam5(order);
    os::SleepFor(kSelectTime);
    camera->GetGain(gain);
    return STATUS_SUCCESS;
}

RETSTATUS CameraSet::GetCameraSerialNumber(const int& index, char*& serial) {
    const DeviceGuard device(m_csDevice);
    if (index < 0 || index >= ChannelCount() || serial != nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    CPhysicalCameraThread* const camera = FirstCamera();
    if (camera == nullptr) {
        serial = nullptr;
        return STATUS_FAILED;
    }
    const std::string text = camera->GetSerial();
    serial = new char[text.size() + 1]{};
    std::copy(text.begin(), text.end(), serial);
    return STATUS_SUCCESS;
}

RETSTATUS CameraSet::GetCameraResolution(const int& index, int& width, int& height) {
    const DeviceGuard device(m_csDevice);
    if (index < 0 || index >= ChannelCount()) {
        return STATUS_NOT_CONNECTED;
    }
    CPhysicalCameraThread* const camera = FirstCamera();
    if (camera == nullptr) {
        width = kNoValue;
        height = kNoValue;
        return STATUS_FAILED;
    }
    camera->GetResolution(width, height);
    return STATUS_SUCCESS;
}

RETSTATUS CameraSet::GetConnectCameraCount(int& count) const {
    count = m_cameraCount;
    return STATUS_SUCCESS;
}

}  // namespace Korvex3Sync
