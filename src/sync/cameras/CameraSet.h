#pragma once

#include <atomic>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "Korvex3Sync/Status.h"
#include "camera/PhysicalCameraThread.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Event.h"
#include "sync/cameras/RememberedParameters.h"
#include "sync/frames/FramePath.h"

namespace Korvex3Sync {

/// The cameras of one connection and what their exposure and gain were last asked for.
///
/// The device lock is the connection's and covers the list. It is recursive: an operation takes it,
/// and a caller that makes several calls in a row holds it around them. Inside it a camera's pause
/// lock is taken, so that a call that pauses cameras waits for the running iteration of each grab
/// thread. The grab threads never touch the list: what they need of it is in the routes of the
/// frame path.
class CameraSet {
public:
    /// The cameras get `listener`, give their frames to `frames` and count there. Both live longer.
    CameraSet(os::CriticalSection& device, PhysicalCameraThreadListener& listener,
              FramePath& frames);
    CameraSet(const CameraSet&) = delete;
    CameraSet& operator=(const CameraSet&) = delete;

    // Opening (OpenCameras.cpp).

    /// Opens the cameras and starts their grab threads: 0 opened, 1 bad lists, 2 camera failure.
    int OpenCameras(const std::vector<char*>& camSerials, const std::vector<int>& widths,
                    const std::vector<int>& heights);

    // Pausing, releasing, closing (CameraSet.cpp).

    /// Pauses and releases every camera and makes new instances of them.
    void PauseAndRecreate();
    /// Lets the grab threads run again.
    void Resume();
    /// Releases the cameras and leaves their grab threads paused. Always 7.
    RETSTATUS ReleaseCamera();
    /// Opens the cameras again in place, starts them and writes exposures and gains back; one that
    /// does not open is logged and stays paused.
    void ReOpen();
    /// Restarts the acquisition of every camera.
    void ResetState();
    /// Ends the grab threads and destroys the cameras. For the end of the connection.
    void Close();

    // Parameters (ExposureAndGain.cpp). All of them reach the first camera, whatever the order, and
    // hold the device lock meanwhile, waits of 20 ms included. What the camera answers to a query
    // is not reported; a setter tries twice and then answers 7. An order out of range is 6 where it
    // is looked at, a connection without cameras 0. Exposures are in milliseconds.

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

    /// What a reconnection would write back now.
    RememberedParameters ParametersToRestore();

private:
    bool AssignCameraChannels(const std::vector<char*>& camSerials) KORVEX_REQUIRES(m_csDevice);
    bool CreateCameras(const std::vector<char*>& camSerials, const std::vector<int>& widths,
                       const std::vector<int>& heights) KORVEX_REQUIRES(m_csDevice);
    bool CheckCameraTotals() KORVEX_REQUIRES(m_csDevice);
    bool OpenAndStartCameras() KORVEX_REQUIRES(m_csDevice);
    void SetRoutes() KORVEX_REQUIRES(m_csDevice);
    void StartGrabbing() KORVEX_REQUIRES(m_csDevice);

    /// `record` is logged for each camera.
    void PauseAndRelease(const char* record) KORVEX_REQUIRES(m_csDevice);

    /// Null without cameras.
    CPhysicalCameraThread* FirstCamera() const KORVEX_REQUIRES(m_csDevice);
    /// Channel codes: one for each entry of the serial list.
    int ChannelCount() const KORVEX_REQUIRES(m_csDevice);

    os::CriticalSection& m_csDevice;
    PhysicalCameraThreadListener& m_listener;
    FramePath& m_frames;

    std::vector<std::unique_ptr<CPhysicalCameraThread>> m_cameras KORVEX_GUARDED_BY(m_csDevice);
    std::atomic<int> m_cameraCount{0};  // of the list, for those who ask without the lock
    /// Width and height of each camera.
    std::vector<int> m_cameraParams KORVEX_GUARDED_BY(m_csDevice);
    /// The channel code of each entry of the serial list.
    std::vector<int> m_cameraChannels KORVEX_GUARDED_BY(m_csDevice);
    /// The first serial of each run.
    std::vector<std::string> m_cameraSerials KORVEX_GUARDED_BY(m_csDevice);
    /// One for each camera.
    std::deque<os::Event> m_frameEvents KORVEX_GUARDED_BY(m_csDevice);
    unsigned m_allCamerasMask KORVEX_GUARDED_BY(m_csDevice) = 0;
    RememberedParameters m_remembered KORVEX_GUARDED_BY(m_csDevice);
};

}  // namespace Korvex3Sync
