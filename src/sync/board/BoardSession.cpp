#include "sync/board/BoardSession.h"

#include "platform/include/BoardFacts.h"
#include "platform/include/zr3DHandiDLPdev.h"
#include "platform/os/Log.h"
#include "sync/board/RestoreSettings.h"
#include "sync/connection/ManagerLog.h"
#include "sync/connection/ScanCallbackRule.h"

namespace Korvex3Sync {

namespace board = zr3DHandiDLPdev;

namespace {

constexpr auto kVendorId = hardware::HexText(hardware::kBoardVendor);
constexpr auto kProductId = hardware::HexText(hardware::kBoardProduct);
constexpr char kAnyBoard[] = "";
constexpr board::PROJECTTYPE kProjectionOff{0};

}  // namespace

BoardSession::BoardSession(os::CriticalSection& device, TriggerStarts& starts)
    : m_csDevice(device), m_starts(starts) {
    // The worker thread does nothing; it only exists to be stopped at shutdown.
    m_hWorkerThread.Start([] {});
}

BoardSession::~BoardSession() {
    EndWorkerThread();
}

RETSTATUS BoardSession::Connect(const char* pcbSerial) {
    const RETSTATUS opened = InitProjector(pcbSerial);
    if (opened == STATUS_SUCCESS) {
        os::CriticalSectionGuard device(m_csDevice);
        m_boardSerial = pcbSerial;
        m_bDeviceLost = false;
    }
    return opened;
}

RETSTATUS BoardSession::ReOpen() {
    const DeviceGuard device(m_csDevice);
    ExitProjector();
    return InitProjector(m_boardSerial.c_str());
}

RETSTATUS BoardSession::InitProjector(const char* pcbSerial) {
    KORVEX_LOG(kManagerSyncLog) << " InitProjector In IManagerSync ";
    if (pcbSerial == nullptr) {
        KORVEX_LOG(kManagerSyncLog) << " InitProjector In IManagerSync failed ";
        return STATUS_PARAMETER;
    }
    KORVEX_LOG(kManagerSyncLog) << " InitProjector pcbSerial=" << pcbSerial;
    const DeviceGuard device(m_csDevice);
    void* handle = m_hDevice;
    const bool opened =
        board::zr3DInitHidDev(handle, kVendorId.data(), kProductId.data(), pcbSerial);
    // A failed open may leave something to close.
    m_hDevice = handle;
    return opened ? STATUS_SUCCESS : STATUS_PROJECTOR;
}

void BoardSession::ExitProjector() {
    KORVEX_LOG(kManagerSyncLog) << "IShotSync::ExitProjector 0";
    void* handle = m_hDevice;
    if (handle != nullptr) {
        board::zr3DExitHidDev(handle);
        m_hDevice = nullptr;
    }
    EndWorkerThread();
    KORVEX_LOG(kManagerSyncLog) << "IShotSync::ExitProjector 1";
}

void BoardSession::SwitchOffAndClose() {
    os::CriticalSectionGuard device(m_csDevice);
    if (m_remembered.heartbeatEnabled) {
        EnableHeartbeat(false);
    }
    void* handle = m_hDevice;
    board::zr3DProject(handle, kProjectionOff);
    board::zr3DExitHidDev(handle);
    m_hDevice = nullptr;
}

void BoardSession::EndWorkerThread() {
    if (m_hWorkerThread.Started()) {
        m_bWorkerRun = false;
        m_workerEvent.Set();
        m_hWorkerThread.Join();
    }
}

RETSTATUS BoardSession::EnsureBoardOpen(const char* pcbSerial) {
    if (IsOpen()) {
        return STATUS_SUCCESS;
    }
    // Checks again with the lock held: a reconnection on another thread may open the board first,
    // and a second open would leak its handle.
    const DeviceGuard device(m_csDevice);
    if (IsOpen()) {
        return STATUS_SUCCESS;
    }
    const RETSTATUS opened = InitProjector(pcbSerial);
    if (opened != STATUS_SUCCESS) {
        ExitProjector();
    }
    return opened;
}

RETSTATUS BoardSession::QueryCurrentStatus(unsigned char& first, unsigned char& second) {
    void* const handle = m_hDevice;
    if (handle == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    return board::zr3DQueryCurrentStatus(handle, first, second) ? STATUS_SUCCESS : STATUS_FAILED;
}

bool BoardSession::PollStatus(unsigned char& first, unsigned char& second) {
    os::CriticalSectionGuard device(m_csDevice);
    m_bDeviceLost = QueryCurrentStatus(first, second) != STATUS_SUCCESS;
    return !m_bDeviceLost;
}

void BoardSession::RestoreSettings() {
    os::CriticalSectionGuard device(m_csDevice);
    RestoreBoard(m_hDevice, m_remembered,
                 [this](void* handle, auto mode)
                     KORVEX_NO_THREAD_SAFETY_ANALYSIS { return WriteTriggerMode(handle, mode); });
}

RememberedSettings BoardSession::SettingsToRestore() {
    os::CriticalSectionGuard device(m_csDevice);
    return m_remembered;
}

RETSTATUS BoardSession::ResetBoard(bool resetFPGA, bool resetDevice) {
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

bool BoardSession::Restart() {
    return SendReset(&board::zr3DResetDevice);
}

bool BoardSession::SendReset(bool (*reset)(void* board)) {
    const bool accepted = reset(m_hDevice);
    m_starts.ForgetState();  // either reset switches the trigger off
    return accepted;
}

void BoardSession::SwitchHeartbeatOn() {
    board::zr3DEnableHeartbeat(m_hDevice, true);
}

bool BoardSession::WriteTriggerMode(void* handle, board::MASK_TRIGGER_MODE mode) {
    m_starts.Writing(int{mode});
    const bool accepted = board::zr3DSetVideoTrigleMode(handle, mode);
    m_starts.Written(accepted);
    return accepted;
}

}  // namespace Korvex3Sync
