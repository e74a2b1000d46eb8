#include <chrono>

#include "platform/include/zr3DHandiDLPdev.h"
#include "platform/os/Log.h"
#include "platform/os/Print.h"
#include "sync/ManagerSync.h"
#include "sync/RestoreSettings.h"

namespace Korvex3Sync {

namespace board = zr3DHandiDLPdev;

namespace {

constexpr auto& kLog = kManagerSyncLog;

/// Results of a reconnection.
constexpr int kReconnected = 0;
constexpr int kBoardNotOpened = 1;
constexpr int kBoardSilent = 3;

/// How long a board takes to come back after its restart.
constexpr std::chrono::milliseconds kRestartTime{7000};
constexpr std::chrono::milliseconds kHeartbeatTime{100};

/// Any board, and any camera instance: the one that the camera was opened with.
constexpr char kAnyBoard[] = "";
constexpr const char* kSerialOfLastOpen = nullptr;

/// The same text as a line on standard output and in the log.
void PrintAndLog(const char* text) {
    os::Print("%s\n", text);
    KORVEX_LOG(kLog) << text;
}

}  // namespace

/// Parks the status thread while it lives. At its end, also when memory ran out meanwhile, that
/// thread and the grab threads go on, unless another reconnection of the same head is not through.
class IManagerSync::Parked {
public:
    explicit Parked(IManagerSync& manager) : m_manager(manager) {
        os::MutexGuard lock(m_manager.m_parkMutex);
        ++m_manager.m_reconnections;
        m_manager.m_bPauseStatusCheck = true;
    }
    ~Parked() {
        {
            os::MutexGuard lock(m_manager.m_parkMutex);
            if (--m_manager.m_reconnections > 0) {
                return;
            }
            m_manager.m_bPauseStatusCheck = false;
        }
        m_manager.ReInitializeCamera(false);
    }
    Parked(const Parked&) = delete;
    Parked& operator=(const Parked&) = delete;

private:
    IManagerSync& m_manager;
};

int IManagerSync::ReConnectDeviceEx() {
    const Parked parked(*this);
    ReInitializeCamera(true);
    return ReConnectOrRestart();
}

int IManagerSync::ReConnectOrRestart() {
    int result = ReConnectDevice();
    KORVEX_LOG(kLog) << "ReConnectDeviceEx ret=" << result;
    if (result == kBoardNotOpened) {
        return result;
    }
    if (result == kBoardSilent) {
        PrintAndLog("Start Send Restart Report Command to Device");
        if (SendReset(&board::zr3DResetDevice)) {
            PrintAndLog("Send Restart Report Command to Device");
            if (WaitUnlessStopped(kRestartTime)) {
                result = ReConnectDevice();
                KORVEX_LOG(kLog) << "ReConnectDevice ret=" << result;
                os::Print("End Reconnect Device Second time, ret = %d\n", result);
            }
        }
    }
    KORVEX_LOG(kLog) << "ReConnectDeviceEx ret=" << result;
    if (result == kReconnected) {
        // What the application asked for stays remembered as it is.
        board::zr3DEnableHeartbeat(m_hDevice, true);
        WaitUnlessStopped(kHeartbeatTime);
    }
    return result;
}

int IManagerSync::ReConnectDevice() {
    PrintAndLog("Start Reconnect Device Function");
    RETSTATUS opened = STATUS_FAILED;
    {
        const DeviceGuard device(this, m_csDevice);
        ExitProjector();
        opened = InitProjector(m_boardSerial.c_str());
        if (opened == STATUS_SUCCESS) {
            PrintAndLog("Init Projector First time success");
            unsigned char first = 0;
            unsigned char second = 0;
            if (QueryCurrentStatus(first, second) == STATUS_SUCCESS) {
                KORVEX_LOG(kLog) << "QueryCurrentStatus success.";
                os::Print("QueryCurrentStatus success\n");
                ReOpenCameras();
                RestoreBoard(m_hDevice, m_remembered, [this](auto* handle, auto mode) {
                    return WriteTriggerMode(handle, mode);
                });
                return kReconnected;
            }
        }
    }
    if (opened != STATUS_SUCCESS) {
        PrintAndLog("Init Projector First time failed");
        return kBoardNotOpened;
    }
    KORVEX_LOG(kLog) << "QueryCurrentStatus failed.";
    return kBoardSilent;
}

void IManagerSync::ReOpenCameras() {
    StartKeysAnew();  // what the board triggered meanwhile is not lost
    const std::vector<OrderSetting> orders = OrdersToRestore(m_remembered);
    for (auto& camera : m_cameras) {
        camera->PauseThread();
        if (!camera->ReOpenCamera()) {
            KORVEX_LOG(kLog) << "ReOpenCamera failed";
            continue;
        }
        PrintAndLog("ReOpenCamera success");
        camera->StartCamera();
        for (const OrderSetting& setting : orders) {
            SetCameraExposureAndGain(setting.order, setting.exposure, setting.gain);
        }
        camera->ResumeThread();
    }
}

void IManagerSync::ReInitializeCamera(bool release) {
    const DeviceGuard device(this, m_csDevice);
    if (!release) {
        for (auto& camera : m_cameras) {
            camera->ResumeThread();
        }
        return;
    }
    PauseAndReleaseCameras("ReInitializeCamera success");
    for (auto& camera : m_cameras) {
        camera->InializeCamera(kSerialOfLastOpen);
    }
}

RETSTATUS IManagerSync::ReleaseCamera() {
    const DeviceGuard device(this, m_csDevice);
    PauseAndReleaseCameras("ReleaseCamera success");
    return STATUS_SUCCESS;
}

void IManagerSync::PauseAndReleaseCameras(const char* record) {
    for (auto& camera : m_cameras) {
        camera->PauseThread();
        camera->ReleaseCamera();
        KORVEX_LOG(kLog) << record;
        os::Print("ReInitializeCamera success\n");  // the one text of both callers
    }
}

RETSTATUS IManagerSync::ResetBoard(bool resetFPGA, bool resetDevice) {
    const RETSTATUS open = EnsureBoardOpen(kAnyBoard);
    if (open != STATUS_SUCCESS) {
        return open;
    }
    if (!resetDevice && !resetFPGA) {
        return STATUS_SUCCESS;
    }
    const bool reset = SendReset(resetDevice ? &board::zr3DResetDevice : &board::zr3DResetFPGA);
    return reset ? STATUS_SUCCESS : STATUS_FAILED;
}

bool IManagerSync::SendReset(bool (*reset)(void* board)) {
    const bool accepted = reset(m_hDevice);
    m_frames.Starts().ForgetState();  // either reset switches the trigger off
    return accepted;
}

}  // namespace Korvex3Sync
