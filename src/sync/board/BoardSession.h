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

/// The board of one connection: its handle, whether it is lost, the settings that were last
/// requested, and all operations on it.
///
/// The operations take the device lock of the connection, which guards the board. It is recursive,
/// so a caller that makes several calls in a row can hold it around them. Results are the public
/// status codes. Operations block for the lock and for the board's answer.
class BoardSession {
public:
    /// Reports every write of the trigger mode and every reset to `starts`.
    BoardSession(os::CriticalSection& device, TriggerStarts& starts);
    /// The board must be closed.
    ~BoardSession();
    BoardSession(const BoardSession&) = delete;
    BoardSession& operator=(const BoardSession&) = delete;

    // Opening and closing (BoardSession.cpp).

    /// Opens the board for a connection: 7, 1 or 3. Remembers the serial for `ReOpen` and clears
    /// the mark of a lost board.
    RETSTATUS Connect(const char* pcbSerial);
    /// Closes and reopens the board: 7 or 1. A board that was marked lost stays marked.
    RETSTATUS ReOpen();
    /// Opens the board: 7, 1 or 3.
    RETSTATUS InitProjector(const char* pcbSerial);
    /// Closes the board and ends the worker thread. Leaves the projection as it is.
    void ExitProjector();
    /// Switches the heartbeat off if it was last switched on, switches the projection off and
    /// closes the board. For the end of the connection.
    void SwitchOffAndClose();
    /// Ends the worker thread, which does nothing else.
    void EndWorkerThread();
    bool IsOpen() const { return m_hDevice != nullptr; }

    // State of the board.

    /// The board's two status bytes: 7, 0 or 6. Takes no lock.
    RETSTATUS QueryCurrentStatus(unsigned char& first, unsigned char& second);
    /// A status poll: marks the board as lost if it does not answer, and clears the mark otherwise.
    /// Returns whether it answered.
    bool PollStatus(unsigned char& first, unsigned char& second);
    /// Writes all remembered settings to the open board; a refused one does not stop the others.
    void RestoreSettings();
    /// The settings that a reconnection would write back now.
    RememberedSettings SettingsToRestore();

    // Resets. They do not take the device lock.

    /// Resets the board, or only its FPGA. Opens any board if none is open.
    RETSTATUS ResetBoard(bool resetFPGA, bool resetDevice);
    /// Restarts the open board. False if it refuses.
    bool Restart();
    /// Switches the heartbeat of the open board on, without changing the remembered value.
    void SwitchHeartbeatOn();

    // Operations (BoardOperations.cpp). All of them go through BoardOperation.

    /// Opens the board if it is not open; returns the result of opening if that fails.
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

    /// Runs a board operation under the device lock. Returns 6 without a board and 3 for bad
    /// parameters. Calls `remember`, then returns 0 if the board is lost and `lost` is Refuses.
    /// Otherwise runs `call`: true gives 7, false gives 0.
    template <class Remember, class Call>
    RETSTATUS BoardOperation(DeviceLost lost, Remember remember, Call call,
                             Parameters parameters = Parameters::Good);
    /// A board operation that remembers nothing.
    template <class Call>
    RETSTATUS BoardQuery(Call call);

    /// Opens the board if it is not open; cleans up after a failed open.
    RETSTATUS EnsureBoardOpen(const char* pcbSerial);
    /// Writes the trigger mode and reports it to `m_starts`. No other code may write it.
    bool WriteTriggerMode(void* handle, zr3DHandiDLPdev::MASK_TRIGGER_MODE mode)
        KORVEX_REQUIRES(m_csDevice);
    /// Sends one of the reset commands to the open board.
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
