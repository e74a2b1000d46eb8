#include <chrono>

#include "platform/os/Log.h"
#include "platform/os/Print.h"
#include "sync/ManagerSync.h"
#include "sync/connection/ManagerLog.h"
#include "sync/connection/ScanCallbackRule.h"

namespace Korvex3Sync {
namespace {

/// Results of a reconnection.
constexpr int kReconnected = 0;
constexpr int kBoardNotOpened = 1;
constexpr int kBoardSilent = 3;

/// The time that a board needs to restart.
constexpr std::chrono::milliseconds kRestartTime{7000};
constexpr std::chrono::milliseconds kHeartbeatTime{100};

/// Prints and logs the same text.
void PrintAndLog(const char* text) {
    os::Print("%s\n", text);
    KORVEX_LOG(kManagerSyncLog) << text;
}

}  // namespace

/// Parks the status thread. The destructor resumes it and the grab threads, also if memory ran out
/// meanwhile, unless another reconnection of the same head is still running.
class IManagerSync::Parked {
public:
    explicit Parked(IManagerSync& manager) : m_manager(manager) { m_manager.m_statusPoller.Park(); }
    ~Parked() {
        if (m_manager.m_statusPoller.Unpark()) {
            m_manager.ReInitializeCamera(false);
        }
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
    KORVEX_LOG(kManagerSyncLog) << "ReConnectDeviceEx ret=" << result;
    if (result == kBoardNotOpened) {
        return result;
    }
    if (result == kBoardSilent) {
        PrintAndLog("Start Send Restart Report Command to Device");
        if (m_board.Restart()) {
            PrintAndLog("Send Restart Report Command to Device");
            if (WaitUnlessStopped(kRestartTime)) {
                result = ReConnectDevice();
                KORVEX_LOG(kManagerSyncLog) << "ReConnectDevice ret=" << result;
                os::Print("End Reconnect Device Second time, ret = %d\n", result);
            }
        }
    }
    KORVEX_LOG(kManagerSyncLog) << "ReConnectDeviceEx ret=" << result;
    if (result == kReconnected) {
        m_board.SwitchHeartbeatOn();
        WaitUnlessStopped(kHeartbeatTime);
    }
    return result;
}

int IManagerSync::ReConnectDevice() {
    PrintAndLog("Start Reconnect Device Function");
    RETSTATUS opened = STATUS_FAILED;
    {
        const DeviceGuard device(m_csDevice);
        opened = m_board.ReOpen();
        if (opened == STATUS_SUCCESS) {
            KORVEX_LOG(kManagerSyncLog) << "Init Projector First time success";
            os::Print("Init Projector First time success\n");
            unsigned char first = 0;
            unsigned char second = 0;
            if (m_board.QueryCurrentStatus(first, second) == STATUS_SUCCESS) {
                KORVEX_LOG(kManagerSyncLog) << "QueryCurrentStatus success.";
                os::Print("QueryCurrentStatus success\n");
                m_frames.Starts().Restart();  // triggers during the reconnection are not losses
                m_cameraSet.ReOpen();
                m_board.RestoreSettings();
                return kReconnected;
            }
        }
    }
    if (opened != STATUS_SUCCESS) {
        PrintAndLog("Init Projector First time failed");
        return kBoardNotOpened;
    }
    KORVEX_LOG(kManagerSyncLog) << "QueryCurrentStatus failed.";
    return kBoardSilent;
}

void IManagerSync::ReInitializeCamera(bool release) {
    if (release) {
        m_cameraSet.PauseAndRecreate();
    } else {
        m_cameraSet.Resume();
    }
}

}  // namespace Korvex3Sync
