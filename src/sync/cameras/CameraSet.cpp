#include "sync/cameras/CameraSet.h"

#include <cstddef>

#include "platform/os/Log.h"
#include "platform/os/Print.h"
#include "sync/connection/ManagerLog.h"
#include "sync/connection/ScanCallbackRule.h"

namespace Korvex3Sync {
namespace {

/// Selects the serial that was opened last.
constexpr const char* kSerialOfLastOpen = nullptr;

/// Keeps a camera paused for a scope.
class Paused {
public:
    explicit Paused(CPhysicalCameraThread& camera) : m_camera(camera) { m_camera.PauseThread(); }
    ~Paused() { m_camera.ResumeThread(); }
    Paused(const Paused&) = delete;
    Paused& operator=(const Paused&) = delete;

private:
    CPhysicalCameraThread& m_camera;
};

}  // namespace

CameraSet::CameraSet(os::CriticalSection& device, PhysicalCameraThreadListener& listener,
                     FramePath& frames)
    : m_csDevice(device), m_listener(listener), m_frames(frames) {}

template <class Action>
void CameraSet::ForEachCamera(Action action) {
    for (const auto& camera : m_cameras) {
        if (camera != nullptr) {
            action(*camera);
        }
    }
}

void CameraSet::PauseAndRecreate() {
    const DeviceGuard device(m_csDevice);
    PauseAndRelease("ReInitializeCamera success");
    ForEachCamera([](CPhysicalCameraThread& camera) { camera.InializeCamera(kSerialOfLastOpen); });
}

void CameraSet::Resume() {
    const DeviceGuard device(m_csDevice);
    ForEachCamera([](CPhysicalCameraThread& camera) { camera.ResumeThread(); });
}

RETSTATUS CameraSet::ReleaseCamera() {
    const DeviceGuard device(m_csDevice);
    PauseAndRelease("ReleaseCamera success");
    return STATUS_SUCCESS;
}

void CameraSet::PauseAndRelease(const char* record) {
    ForEachCamera([record](CPhysicalCameraThread& camera) {
        camera.PauseThread();
        camera.ReleaseCamera();
        KORVEX_LOG(kManagerSyncLog) << record;
        os::Print("ReInitializeCamera success\n");  // both callers print this text
    });
}

void CameraSet::ReOpen() {
    const DeviceGuard device(m_csDevice);
    const std::vector<OrderSetting> orders = OrdersToRestore(m_remembered);
    ForEachCamera([this, &orders](CPhysicalCameraThread& camera) {
        camera.PauseThread();
        if (!camera.ReOpenCamera()) {
            KORVEX_LOG(kManagerSyncLog) << "ReOpenCamera failed";
            return;
        }
        KORVEX_LOG(kManagerSyncLog) << "ReOpenCamera success";
        os::Print("ReOpenCamera success\n");
        camera.StartCamera();
        for (const OrderSetting& setting : orders) {
            SetCameraExposureAndGain(setting.order, setting.exposure, setting.gain);
        }
        camera.ResumeThread();
    });
}

void CameraSet::ResetState() {
    // Keeps out a reconnection, whose pause this would end and which replaces the cameras.
    const DeviceGuard device(m_csDevice);
    ForEachCamera([](CPhysicalCameraThread& camera) {
        const Paused paused(camera);
        camera.ResetCameraState();
    });
}

void CameraSet::Close() {
    for (std::size_t i = 0;; ++i) {
        CPhysicalCameraThread* camera = nullptr;
        {
            os::CriticalSectionGuard device(m_csDevice);
            if (i == m_cameras.size()) {
                m_cameras.clear();
                m_cameraCount = 0;
                return;
            }
            camera = m_cameras[i].get();
        }
        camera->ResetStatusToInitialize();
        camera->StopThread();
        std::unique_ptr<CPhysicalCameraThread> closed;
        {
            // A status callback may be using the camera.
            os::CriticalSectionGuard device(m_csDevice);
            camera->CloseCamera();
            closed = std::move(m_cameras[i]);
        }
        // Freed without the device lock: the destructor takes the pause lock, inside which a grab
        // thread may take the device lock.
    }
}

RememberedParameters CameraSet::ParametersToRestore() {
    os::CriticalSectionGuard device(m_csDevice);
    return m_remembered;
}

}  // namespace Korvex3Sync
