#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Korvex3Sync/Statistics.h"
#include "Korvex3Sync/Status.h"
#include "Korvex3Sync/Types.h"
#include "camera/PhysicalCameraThread.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Event.h"
#include "platform/os/Thread.h"
#include "sync/ChannelCodes.h"
#include "sync/RememberedSettings.h"
#include "sync/frames/FramePath.h"
#include "sync/frames/ScanCallbackRule.h"

namespace Korvex3Sync {

/// One connected head in direct mode: the board, its cameras, the pairing of their frames and the
/// status thread.
///
/// Locks, each taken alone but for these orders: m_csDevice before m_csStatus; m_csDevice before a
/// camera's pause lock; a camera's pause and snap locks before the m_csFrame of the frame path, on
/// its grab thread. m_csDevice covers board I/O and the camera list, m_csStatus the status callback
/// (which runs with m_csDevice and m_csStatus held).
class IManagerSync : public PhysicalCameraThreadListener {
public:
    IManagerSync();
    /// Stops the threads, closes cameras and board. A status callback may still be told 255, 255
    /// once while this runs; none runs afterwards.
    ~IManagerSync() override;
    IManagerSync(const IManagerSync&) = delete;
    IManagerSync& operator=(const IManagerSync&) = delete;

    /// For a connection that is about to be closed, from any thread: calls that wait inside end at
    /// once, now and from then on. A snapshot fails as it does without a frame; a reconnection does
    /// not wait for the restart of its board and fails.
    void RequestStop();

    void OnThreadNotify(int first, int second) override;
    void OnThreadSignal(int value) override;
    virtual void OnThreadValue(int value);
    /// Opens the cameras and starts their grab threads: 0 opened, 1 bad lists, 2 camera failure.
    virtual int OpenCameras(const std::vector<char*>& camSerials, const std::vector<int>& widths,
                            const std::vector<int>& heights);
    /// With `release` pauses and releases every camera and makes new instances of them; without it
    /// lets the grab threads run again. Waits for the running iteration of each grab thread.
    virtual void ReInitializeCamera(bool release);
    /// Closes and opens the board, then reopens the cameras and writes everything back: 0
    /// reconnected, 1 the board did not open, 3 it did not answer. Holds the device lock
    /// throughout.
    virtual int ReConnectDevice();

    // Connection (ManagerSync.cpp).

    RETSTATUS Connect(const char* deviceName, const char* pcbSerial,
                      const std::vector<char*>& camSerials, const std::vector<int>& widths,
                      const std::vector<int>& heights);
    /// Opens the board: 7, 1 or 3.
    RETSTATUS InitProjector(const char* pcbSerial);
    /// Closes the board and ends the worker thread. Projection stays as it is.
    void ExitProjector();

    // Reconnection (Reconnection.cpp).

    /// The whole reconnection: parks the status thread, releases the cameras, reconnects, restarts
    /// a board that does not answer and tries once more. Gives the last result of ReConnectDevice.
    /// Blocks for 7 s where the board is restarted.
    int ReConnectDeviceEx();
    /// Releases the cameras and leaves their grab threads paused. Always 7.
    RETSTATUS ReleaseCamera();
    /// Resets the board alone, or only its FPGA; opens any board where none is open. Without the
    /// device lock.
    RETSTATUS ResetBoard(bool resetFPGA, bool resetDevice);

    // Board operations (BoardOperations.cpp). All share one frame.

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

    /// What a reconnection would write back now.
    RememberedSettings SettingsToRestore();

    // Camera parameters (CameraParameters.cpp). All of them reach the first camera, whatever the
    // order, and hold the device lock meanwhile, waits of 20 ms included. What the camera answers
    // to a query is not reported; a setter tries twice and then answers 7. An order out of range is
    // 6 where it is looked at, a connection without cameras 0. Exposures are in milliseconds.

    RETSTATUS SetCameraExposureAndGain(const int& order, const double& exposure, const int& gain);
    /// 7 without cameras too; the outputs stay as they are then.
    RETSTATUS GetCameraExposureAndGain(const int& order, double& exposure, int& gain);
    RETSTATUS SetExposureTime(const int& order, const double& exposure);
    RETSTATUS GetExposureTime(const int& order, double& exposure);
    RETSTATUS SetCameraGain(const int& order, const int& gain);
    RETSTATUS GetCameraGain(const int& order, int& gain);
    /// `serial` must be null and receives a `new[]` text that is the caller's.
    RETSTATUS GetCameraSerialNumber(const int& index, char*& serial);
    RETSTATUS GetCameraResolution(const int& index, int& width, int& height);
    /// Without lock.
    RETSTATUS GetConnectCameraCount(int& count) const;

    // Colour snapshots (ColorSnapshot.cpp). One at a time; blocks for up to 100 s per image. The
    // images are appended and are the caller's (`new[]` blocks); an image that is missing is null.

    RETSTATUS SnapColorImage(std::vector<unsigned char*>& images, int& width, int& height,
                             const int& camOrder, const double& exposure, const int& gain,
                             const CONTROLROUTE& route);
    /// Three images; `exposures` and `gains` hold two entries each, otherwise 3.
    RETSTATUS SnapColorImageForIR(std::vector<unsigned char*>& images, int& width, int& height,
                                  const int& camOrder, const std::vector<double>& exposures,
                                  const std::vector<int>& gains, const CONTROLROUTE& route);

    // Frames (frames/FramePath.h).

    RETSTATUS SetScanCallBackFunction(ScanCallBackFunction callback, void* context);

    // Losses (Statistics.cpp).

    /// Any thread; takes none of the locks above.
    RETSTATUS GetScanStatistics(ScanStatistics& statistics) const;
    /// For a reconnection, before the cameras give frames again: no key is missing before the first
    /// one that comes then, whatever the board did meanwhile.
    void StartKeysAnew();

    // Status and heartbeat (StatusThread.cpp).

    /// The first call must not run beside another.
    RETSTATUS SetStatusCallBackFunction(StatusCallBackFunction callback, void* context);
    RETSTATUS EnableHeartbeat(bool enable);

private:
    /// Made for each camera when it is opened; frames are paired without it.
    struct CameraBookkeeping {
        os::Event frameEvent;
        std::array<int, 4> values{0, 0, -1, 0};
    };
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

    /// One image of a snapshot after the first.
    struct SnapPhase;

    /// Opens the board where it is not open; a failed open closes it again.
    RETSTATUS EnsureBoardOpen(const char* pcbSerial);
    void EndWorkerThread();
    bool AssignCameraChannels(const std::vector<char*>& camSerials);
    bool CreateCameras(const std::vector<char*>& camSerials, const std::vector<int>& widths,
                       const std::vector<int>& heights);
    bool CheckCameraTotals();
    bool OpenAndStartCameras();
    void StartGrabbing(std::size_t serialCount);

    class Parked;

    /// Reconnects, a second time after a restart of a board that does not answer.
    int ReConnectOrRestart();
    /// A reset command of the board library, sent to the open board.
    bool SendReset(bool (*reset)(void* board));
    void ReOpenCameras() KORVEX_REQUIRES(m_csDevice);
    /// `record` is logged for each camera.
    void PauseAndReleaseCameras(const char* record) KORVEX_REQUIRES(m_csDevice);

    /// Null without cameras.
    CPhysicalCameraThread* FirstCamera() const;
    /// Channel codes: one for each entry of the serial list.
    int ChannelCount() const;

    /// Waits as long as the nominal time. False when it was told to stop.
    bool WaitUnlessStopped(std::chrono::milliseconds nominal);

    void SwitchSnapTrigger(bool on);
    /// Runs the steps of a snapshot. What one that threw had caught is freed, and nothing is caught
    /// for it any more.
    template <class Steps>
    RETSTATUS Snapshot(Steps steps);
    /// Whether the frame came.
    bool SnapFirst(const CONTROLROUTE& route);
    bool SnapNext(const SnapPhase& phase);
    bool WaitForColorFrame(const char* step);
    void RestartCameras();
    RETSTATUS HandOver(std::size_t count, std::vector<unsigned char*>& images, int& width,
                       int& height);

    /// Every write of the trigger mode, with the device lock held: what the keys start with.
    bool WriteTriggerMode(void* handle, zr3DHandiDLPdev::MASK_TRIGGER_MODE mode);

    RETSTATUS QueryCurrentStatus(unsigned char& first, unsigned char& second);
    unsigned StatusThreadFun();
    void PollStatus() KORVEX_REQUIRES(m_csDevice);

    std::atomic<void*> m_hDevice{nullptr};  // null: the board is not open
    os::CriticalSection m_csDevice;
    os::CriticalSection m_csStatus;
    std::atomic<int> m_threadValue{0};

    std::vector<std::unique_ptr<CPhysicalCameraThread>> m_cameras;
    std::vector<int> m_cameraParams;           // width, height of each camera
    std::vector<int> m_cameraChannels;         // channel code of each serial-list entry
    std::vector<std::string> m_cameraSerials;  // first serial of each run
    std::vector<std::unique_ptr<CameraBookkeeping>> m_cameraBookkeeping;  // one per camera
    std::vector<unsigned char*> m_serialSlots;                            // one per list entry
    std::string m_boardSerial;
    unsigned m_allCamerasMask = 0;

    std::atomic<bool> m_bContinueStatusThread{false};
    std::atomic<bool> m_bPauseStatusCheck{false};  // while m_reconnections is not 0
    os::Mutex m_parkMutex;
    int m_reconnections KORVEX_GUARDED_BY(m_parkMutex) = 0;
    os::Thread m_hStatusThread;
    os::Event m_statusWake;  // ends the status thread's waits
    os::Event m_stop;        // ends the waits of callers
    StatusCallBackFunction m_pStatusCallBack KORVEX_GUARDED_BY(m_csStatus) = nullptr;
    void* m_pStatusContext KORVEX_GUARDED_BY(m_csStatus) = nullptr;
    int m_nStatusSkipCount KORVEX_GUARDED_BY(m_csStatus) = 0;
    bool m_bDeviceLost KORVEX_GUARDED_BY(m_csDevice) = false;

    std::atomic<bool> m_bWorkerRun{true};
    os::Event m_workerEvent;
    os::Thread m_hWorkerThread;

    bool m_haveColorCamera = false;
    RememberedSettings m_remembered KORVEX_GUARDED_BY(m_csDevice);

    FramePath m_frames{this};
};

inline constexpr char kManagerSyncLog[] = "sync/ManagerSync";

template <class Remember, class Call>
RETSTATUS IManagerSync::BoardOperation(DeviceLost lost, Remember remember, Call call,
                                       Parameters parameters) {
    // A reconnection closes the board for a while, under the lock: whoever meets it waits.
    const DeviceGuard device(this, m_csDevice);
    void* const handle = m_hDevice;
    if (handle == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    if (parameters == Parameters::Bad) {
        return STATUS_PARAMETER;
    }
    remember(m_remembered);
    if (lost == DeviceLost::Refuses && m_bDeviceLost) {
        return STATUS_FAILED;
    }
    return call(handle) ? STATUS_SUCCESS : STATUS_FAILED;
}

template <class Call>
RETSTATUS IManagerSync::BoardQuery(Call call) {
    return BoardOperation(
        DeviceLost::Refuses, [](RememberedSettings&) {}, call);
}

}  // namespace Korvex3Sync
