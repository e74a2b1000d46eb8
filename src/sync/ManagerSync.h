#pragma once

#include <atomic>
#include <chrono>
#include <vector>

#include "Korvex3Sync/Status.h"
#include "camera/PhysicalCameraThreadListener.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Event.h"
#include "sync/board/BoardSession.h"
#include "sync/cameras/CameraSet.h"
#include "sync/frames/FramePath.h"
#include "sync/snapshot/ColorSnapshot.h"
#include "sync/status/StatusPoller.h"

namespace Korvex3Sync {

/// One connected head in direct mode. It owns the parts and defines the order of steps when the
/// head is connected, reconnected and closed. Everything else is an operation of one part.
///
/// Lock order: m_csDevice before the m_csStatus of the status poller; m_csDevice before a camera's
/// pause lock; on a grab thread, the camera's pause lock, then its snap lock, then the m_csFrame of
/// the frame path. Otherwise each lock is taken alone. All parts share m_csDevice, which guards
/// board I/O and the camera list. m_csStatus guards the status callback, which runs with m_csDevice
/// and m_csStatus held. m_csFrame guards the pairing and the scan callback, which runs with the
/// three locks of its grab thread held.
class IManagerSync : public PhysicalCameraThreadListener {
public:
    IManagerSync() = default;
    /// Stops the threads and closes the cameras and the board. During this the status callback may
    /// receive 255, 255 once more. After it no callback runs.
    ~IManagerSync() override;
    IManagerSync(const IManagerSync&) = delete;
    IManagerSync& operator=(const IManagerSync&) = delete;

    void OnThreadNotify(int first, int second) override;
    void OnThreadSignal(int value) override;
    virtual void OnThreadValue(int value);
    /// Opens the cameras and starts their grab threads: 0 opened, 1 bad lists, 2 camera failure.
    virtual int OpenCameras(const std::vector<char*>& camSerials, const std::vector<int>& widths,
                            const std::vector<int>& heights);
    /// If `release` is true, pauses and releases every camera and creates new instances; otherwise
    /// resumes the grab threads. Waits for the running iteration of each grab thread.
    virtual void ReInitializeCamera(bool release);
    /// Closes and reopens the board, then reopens the cameras and writes all settings back: 0
    /// reconnected, 1 the board did not open, 3 it did not answer. Holds the device lock
    /// throughout.
    virtual int ReConnectDevice();

    RETSTATUS Connect(const char* deviceName, const char* pcbSerial,
                      const std::vector<char*>& camSerials, const std::vector<int>& widths,
                      const std::vector<int>& heights);
    /// The whole reconnection: parks the status thread, releases the cameras and reconnects.
    /// Restarts a board that does not answer and tries once more, which takes 7 s. Returns the last
    /// result of ReConnectDevice.
    int ReConnectDeviceEx();
    /// For a connection that is about to be closed; any thread. From now on its calls no longer
    /// wait for frames or for the restart of a board: a snapshot fails as it does without a frame,
    /// and a reconnection fails.
    void RequestStop();

    BoardSession& Board() { return m_board; }
    CameraSet& Cameras() { return m_cameraSet; }
    FramePath& Frames() { return m_frames; }
    StatusPoller& Status() { return m_statusPoller; }
    ColorSnapshot& Snapshots() { return m_snapshot; }

private:
    class Parked;

    /// Reconnects. If the board does not answer, restarts it and reconnects once more.
    int ReConnectOrRestart();
    /// Waits for the nominal time. False if the wait was ended by RequestStop.
    bool WaitUnlessStopped(std::chrono::milliseconds nominal);

    // Members are destroyed in reverse order: first m_csFrame, then m_csStatus, then m_csDevice.
    // The destructor of each waits until nobody holds it.
    os::CriticalSection m_csDevice;
    os::Event m_stop;  // ends the waits of callers
    std::atomic<int> m_threadValue{0};
    bool m_haveColorCamera = false;
    StatusPoller m_statusPoller{m_csDevice, m_board};
    FramePath m_frames{&m_csDevice};
    BoardSession m_board{m_csDevice, m_frames.Starts()};
    CameraSet m_cameraSet{m_csDevice, *this, m_frames};
    ColorSnapshot m_snapshot{m_board, m_cameraSet, m_frames.SnapshotCatch(), m_stop};
};

}  // namespace Korvex3Sync
