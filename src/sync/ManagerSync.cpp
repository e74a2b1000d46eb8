#include "sync/ManagerSync.h"

#include "platform/include/zr3DHandiDLPdev.h"
#include "platform/os/Log.h"
#include "platform/os/Print.h"

namespace Korvex3Sync {
namespace {

constexpr auto& kLog = kManagerSyncLog;

/// The board's USB identifiers in hexadecimal.
constexpr char kVendorId[] = "3267";
constexpr char kProductId[] = "5752";
constexpr zr3DHandiDLPdev::PROJECTTYPE kProjectionOff{0};

const char* Printable(const char* text) {
    return text != nullptr ? text : "(null)";
}

}  // namespace

IManagerSync::IManagerSync() {
    // The worker thread has nothing to do; it exists to be stopped at shutdown.
    m_hWorkerThread.Start([] {});
}

IManagerSync::~IManagerSync() {
    CheckNotInScanCallback(this);
    for (auto& camera : m_cameras) {
        camera->ResetStatusToInitialize();
        camera->StopThread();
        std::unique_ptr<CPhysicalCameraThread> closed;
        {
            // A status callback may be reading from it.
            os::CriticalSectionGuard device(m_csDevice);
            camera->CloseCamera();
            closed = std::move(camera);
        }
        // Freed without the device lock: a grab thread takes it after the lock that this takes.
    }
    if (m_hDevice != nullptr) {
        SetScanCallBackFunction(nullptr, nullptr);
        os::CriticalSectionGuard device(m_csDevice);
        if (m_remembered.heartbeatEnabled) {
            EnableHeartbeat(false);
        }
        void* handle = m_hDevice;
        zr3DHandiDLPdev::zr3DProject(handle, kProjectionOff);
        zr3DHandiDLPdev::zr3DExitHidDev(handle);
        m_hDevice = nullptr;
    }
    EndWorkerThread();
    if (m_hStatusThread.Started()) {
        m_bContinueStatusThread = false;
        m_statusWake.Set();
        m_hStatusThread.Join();
    }
    // No holder may be inside a section when what it guards goes.
    for (os::CriticalSection* section : {&m_csStatus, &m_csDevice}) {
        os::CriticalSectionGuard holder(*section);
    }
}

void IManagerSync::RequestStop() {
    m_stop.Set();
    if (const auto event = m_frames.SnapshotCatch().CaughtEvent()) {
        event->Set();
    }
}

bool IManagerSync::WaitUnlessStopped(std::chrono::milliseconds nominal) {
    return m_stop.Wait(nominal) == os::WaitResult::TimedOut;
}

RETSTATUS IManagerSync::SetScanCallBackFunction(ScanCallBackFunction callback, void* context) {
    return m_frames.SetScanCallBackFunction(callback, context);
}

void IManagerSync::OnThreadNotify(int, int) {}

void IManagerSync::OnThreadSignal(int) {}

void IManagerSync::OnThreadValue(int value) {
    m_threadValue = value;
}

RETSTATUS IManagerSync::Connect(const char* deviceName, const char* pcbSerial,
                                const std::vector<char*>& camSerials,
                                const std::vector<int>& widths, const std::vector<int>& heights) {
    os::Print("Connect device begin =====================================>\n");
    for (std::size_t i = 0; i < camSerials.size(); ++i) {
        os::Print("ConnectCamera: Camera_%d is %s\n", static_cast<int>(i),
                  Printable(camSerials[i]));
    }
    if (deviceName == nullptr || camSerials.size() != widths.size() ||
        widths.size() != heights.size()) {
        return STATUS_PARAMETER;
    }
    const RETSTATUS opened = InitProjector(pcbSerial);
    if (opened != STATUS_SUCCESS) {
        return opened;
    }
    m_boardSerial = pcbSerial;
    {
        os::CriticalSectionGuard device(m_csDevice);
        m_bDeviceLost = false;
    }
    switch (OpenCameras(camSerials, widths, heights)) {
        case 0: {
            m_haveColorCamera = true;
            KORVEX_LOG(kLog) << "m_haveColorCamera=" << m_haveColorCamera
                             << "cameraNames.size()=" << camSerials.size();
            unsigned char first = 0;
            unsigned char second = 0;
            zr3DHandiDLPdev::zr3DQueryCurrentStatus(m_hDevice, first, second);
            return STATUS_SUCCESS;
        }
        case 1:
            ExitProjector();
            return STATUS_PARAMETER;
        case 2:
            ExitProjector();
            return STATUS_CAMERA;
        default:
            ExitProjector();
            return STATUS_FAILED;
    }
}

RETSTATUS IManagerSync::InitProjector(const char* pcbSerial) {
    KORVEX_LOG(kLog) << " InitProjector In IManagerSync ";
    if (pcbSerial == nullptr) {
        KORVEX_LOG(kLog) << " InitProjector In IManagerSync failed ";
        return STATUS_PARAMETER;
    }
    KORVEX_LOG(kLog) << " InitProjector pcbSerial=" << pcbSerial;
    const DeviceGuard device(this, m_csDevice);
    void* handle = m_hDevice;
    const bool opened = zr3DHandiDLPdev::zr3DInitHidDev(handle, kVendorId, kProductId, pcbSerial);
    // What a failed open may have left is no board.
    m_hDevice = opened ? handle : nullptr;
    return opened ? STATUS_SUCCESS : STATUS_PROJECTOR;
}

void IManagerSync::ExitProjector() {
    KORVEX_LOG(kLog) << "IShotSync::ExitProjector 0";
    void* handle = m_hDevice;
    if (handle != nullptr) {
        zr3DHandiDLPdev::zr3DExitHidDev(handle);
        m_hDevice = nullptr;
    }
    EndWorkerThread();
    KORVEX_LOG(kLog) << "IShotSync::ExitProjector 1";
}

RETSTATUS IManagerSync::EnsureBoardOpen(const char* pcbSerial) {
    if (m_hDevice != nullptr) {
        return STATUS_SUCCESS;
    }
    // A reconnection on another thread may be about to open it: a second open would lose a handle.
    const DeviceGuard device(this, m_csDevice);
    if (m_hDevice != nullptr) {
        return STATUS_SUCCESS;
    }
    const RETSTATUS opened = InitProjector(pcbSerial);
    if (opened != STATUS_SUCCESS) {
        ExitProjector();
    }
    return opened;
}

void IManagerSync::EndWorkerThread() {
    if (m_hWorkerThread.Started()) {
        m_bWorkerRun = false;
        m_workerEvent.Set();
        m_hWorkerThread.Join();
    }
}

}  // namespace Korvex3Sync
