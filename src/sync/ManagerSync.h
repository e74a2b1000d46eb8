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

/// One connected head in direct mode: holds its parts and says in which order things happen when
/// it is connected, reconnected and closed. Everything else is an operation of one part.
///
/// Locks, each taken alone but for these orders: m_csDevice before the m_csStatus of the status
/// poller; m_csDevice before a camera's pause lock; a camera's pause and snap locks before the
/// m_csFrame of the frame path, on its grab thread. m_csDevice covers board I/O and the camera list
/// and belongs to all parts; m_csStatus covers the status callback (which runs with m_csDevice and
/// m_csStatus held), m_csFrame the pairing and the scan callback (which runs with the other three
/// held that a grab thread takes).
class IManagerSync : public PhysicalCameraThreadListener {
public:
    IManagerSync() = default;
    /// Stops the threads, closes cameras and board. A status callback may still be told 255, 255
    /// once while this runs; none runs afterwards.
    ~IManagerSync() override;
    IManagerSync(const IManagerSync&) = delete;
    IManagerSync& operator=(const IManagerSync&) = delete;

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

    RETSTATUS Connect(const char* deviceName, const char* pcbSerial,
                      const std::vector<char*>& camSerials, const std::vector<int>& widths,
                      const std::vector<int>& heights);
    /// The whole reconnection: parks the status thread, releases the cameras, reconnects, restarts
    /// a board that does not answer and tries once more. Gives the last result of ReConnectDevice.
    /// Blocks for 7 s where the board is restarted.
    int ReConnectDeviceEx();
    /// For a connection that is about to be closed, from any thread: calls that wait inside end at
    /// once, now and from then on. A snapshot fails as it does without a frame; a reconnection does
    /// not wait for the restart of its board and fails.
    void RequestStop();

    BoardSession& Board() { return m_board; }
    CameraSet& Cameras() { return m_cameraSet; }
    FramePath& Frames() { return m_frames; }
    StatusPoller& Status() { return m_statusPoller; }
    ColorSnapshot& Snapshots() { return m_snapshot; }

private:
    class Parked;

    /// Reconnects, a second time after a restart of a board that does not answer.
    int ReConnectOrRestart();
    /// Waits as long as the nominal time. False when it was told to stop.
    bool WaitUnlessStopped(std::chrono::milliseconds nominal);

    // Destroyed from the last one on: m_csFrame goes first, then m_csStatus, then m_csDevice, each
    // when no holder is inside.
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
