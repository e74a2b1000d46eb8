#pragma once

#include <array>
#include <atomic>
#include <string>

#include "Korvex3Sync/Status.h"
#include "Korvex3Sync/Types.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Event.h"
#include "platform/os/Thread.h"
#include "sync/board/RememberedSettings.h"
#include "sync/frames/TriggerStarts.h"

namespace Korvex3Sync {

/// The board of one connection: whether it is open and answers, what its settings were last asked
/// for, and every operation on it.
///
/// The device lock is the connection's and covers all board I/O. It is recursive: an operation
/// takes it, and a caller that makes several calls in a row holds it around them. Results are the
/// public status codes. Operations block for their turn at the lock and for the board's answer.
class BoardSession {
public:
    /// `starts` hears of every write of the trigger mode and of every reset.
    BoardSession(os::CriticalSection& device, TriggerStarts& starts);
    /// The board must be closed.
    ~BoardSession();
    BoardSession(const BoardSession&) = delete;
    BoardSession& operator=(const BoardSession&) = delete;

    // Opening and closing (BoardSession.cpp).

    /// Opens the board for a connection: 7, 1 or 3. What a later `ReOpen` opens is this board, and
    /// it is not lost.
    RETSTATUS Connect(const char* pcbSerial);
    /// Closes the board and opens it again: 7 or 1. It stays marked lost if it was.
    RETSTATUS ReOpen();
    /// Opens the board: 7, 1 or 3.
    RETSTATUS InitProjector(const char* pcbSerial);
    /// Closes the board and ends the worker thread. Projection stays as it is.
    void ExitProjector();
    /// Closes the board of a connection that ends: heartbeat and projection are switched off.
    void SwitchOffAndClose();
    /// Ends the thread that is only there to be ended.
    void EndWorkerThread();
    bool IsOpen() const { return m_hDevice != nullptr; }

    // State of the board.

    /// The board's two status bytes: 7, 0 or 6. Takes no lock.
    RETSTATUS QueryCurrentStatus(unsigned char& first, unsigned char& second);
    /// The same for a poll, which decides whether the board is lost from now on. False when it is.
    bool PollStatus(unsigned char& first, unsigned char& second);
    /// Writes every remembered setting to the open board; what it refuses does not stop the rest.
    void RestoreSettings();
    /// What a reconnection would write back now.
    RememberedSettings SettingsToRestore();

    // Resets. Without the device lock.

    /// Resets the board alone, or only its FPGA; opens any board where none is open.
    RETSTATUS ResetBoard(bool resetFPGA, bool resetDevice);
    /// Restarts the open board. False when it refuses.
    bool Restart();
    /// Switches the heartbeat of the open board on. What was asked for stays remembered.
    void SwitchHeartbeatOn();

    // Operations (BoardOperations.cpp). All share one frame.

    /// Opens the board where it is not open; where that fails, gives its result.
    RETSTATUS GetFirewareVersion(const char* pcbSerial, std::string& version);
    RETSTATUS SetStrobeControlledByTrigger(const CONTROLROUTE& route, const STROBE_STATE& state);
    RETSTATUS EnableBlueLaser(const LASERWORKMODE& mode, const bool& enable);
    RETSTATUS EnableIRLaser(const bool& enable);
    RETSTATUS SetIRLaserBrightnessLevel(const int& level);
    RETSTATUS SetVideoTriggerPeriod(const int& period);
    RETSTATUS GetVideoTriggerPeriod(int& period);
    RETSTATUS SetProjectorBrightness(const int& brightness);
    RETSTATUS GetProjectorBrightness(int& brightness);
    RETSTATUS EnableVideoTrigger(const CAMERA_TRIGGER_MODE& mode, const bool& enable);
    RETSTATUS Project(const PROJECTWORKTYPES& type);
    RETSTATUS SetStrobeDutioRatio(const int& texture, const int& ratio, const int& withTexture);
    RETSTATUS GetStrobeDutioRatio(int& texture, int& ratio, int& withTexture);
    RETSTATUS SetLaserLineDutioRatio(const int& ratio);
    RETSTATUS GetLaserLineDutioRatio(int& ratio);
    RETSTATUS SetProjectDutioRatio(const int& ratio);
    RETSTATUS GetProjectDutioRatio(int& ratio);
    RETSTATUS SetIRLaserDutioRatio(const int& ratio);
    RETSTATUS GetIRLaserDutioRatio(int& ratio);
    RETSTATUS SetDistanceIndicate(const DISTANCESTATUS& state);
    RETSTATUS WriteUserInfomation(const int& address, const char* data, const int& length);
    RETSTATUS ReadUserInfomation(const int& address, char*& buffer);
    RETSTATUS SetStrobeWorkTime(const int& withTexture, const int& without);
    RETSTATUS GetStrobeWorkTime(int& withTexture, int& without);
    RETSTATUS SetLaserLineWorkTime(const int& time);
    RETSTATUS GetLaserLineWorkTime(int& time);
    RETSTATUS SetProjectWorkTime(const int& time);
    RETSTATUS GetProjectWorkTime(int& time);
    RETSTATUS SetIRLaserWorkTime(const int& time);
    RETSTATUS GetIRLaserWorkTime(int& time);
    RETSTATUS EnableHeartbeat(bool enable);

private:
    enum class DeviceLost { Refuses, Ignored };
    enum class Parameters { Good, Bad };

    /// Every board operation, under the device lock: 6 without a board; 3 for bad parameters;
    /// remember, refuse with 0 where a lost board refuses, else call the library: true is 7,
    /// false 0.
    template <class Remember, class Call>
    RETSTATUS BoardOperation(DeviceLost lost, Remember remember, Call call,
                             Parameters parameters = Parameters::Good);
    /// A board operation that remembers nothing.
    template <class Call>
    RETSTATUS BoardQuery(Call call);

    /// Opens the board where it is not open; a failed open closes it again.
    RETSTATUS EnsureBoardOpen(const char* pcbSerial);
    /// Every write of the trigger mode: what the keys start with.
    bool WriteTriggerMode(void* handle, zr3DHandiDLPdev::MASK_TRIGGER_MODE mode)
        KORVEX_REQUIRES(m_csDevice);
    /// A reset command of the board library, sent to the open board.
    bool SendReset(bool (*reset)(void* board));

    os::CriticalSection& m_csDevice;
    TriggerStarts& m_starts;
    std::atomic<void*> m_hDevice{nullptr};  // null: the board is not open
    std::string m_boardSerial KORVEX_GUARDED_BY(m_csDevice);
    bool m_bDeviceLost KORVEX_GUARDED_BY(m_csDevice) = false;
    RememberedSettings m_remembered KORVEX_GUARDED_BY(m_csDevice);

    std::atomic<bool> m_bWorkerRun{true};
    os::Event m_workerEvent;
    os::Thread m_hWorkerThread;
};

}  // namespace Korvex3Sync
