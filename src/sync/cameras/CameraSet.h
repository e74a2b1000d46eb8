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

/// The cameras of one connection, and the exposures and gains that were last requested.
///
/// The device lock of the connection guards the camera list. It is recursive: each operation takes
/// it, and a caller that makes several calls in a row can hold it around them. The pause lock of a
/// camera is taken inside it, so a call that pauses cameras waits for the running iteration of each
/// grab thread. The grab threads never use the list; the routes of the frame path contain what they
/// need.
class CameraSet {
public:
    /// The cameras get `listener` and deliver their frames and counts to `frames`. Both must
    /// outlive this object.
    CameraSet(os::CriticalSection& device, PhysicalCameraThreadListener& listener,
              FramePath& frames);
    CameraSet(const CameraSet&) = delete;
    CameraSet& operator=(const CameraSet&) = delete;

    // Opening (OpenCameras.cpp).

    /// Opens the cameras and starts their grab threads: 0 opened, 1 bad lists, 2 camera failure.
    int OpenCameras(const std::vector<char*>& camSerials, const std::vector<int>& widths,
                    const std::vector<int>& heights);

    // Pausing, releasing, closing (CameraSet.cpp).

    /// Pauses and releases every camera and creates new instances.
    void PauseAndRecreate();
    /// Resumes the grab threads.
    void Resume();
    /// Releases the cameras and leaves their grab threads paused. Always 7.
    RETSTATUS ReleaseCamera();
    /// Reopens the cameras, starts them and writes exposures and gains back. A camera that does not
    /// open is logged and stays paused.
    void ReOpen();
    /// Restarts the acquisition of every camera.
    void ResetState();
    /// Stops the grab threads and destroys the cameras. For the end of the connection.
    void Close();

    // Parameters (ExposureAndGain.cpp). All of them use the first camera, whatever the order, and
    // hold the device lock throughout, also during their waits of 20 ms. A query does not report
    // whether the camera answered. A setter tries twice and then returns 7. Functions that check
    // the order return 6 if it is out of range; without cameras they return 0. Exposures are in
    // milliseconds.

    RETSTATUS SetCameraExposureAndGain(const int& order, const double& exposure, const int& gain);
    /// Returns 7 even without cameras, and then leaves the outputs unchanged.
    RETSTATUS GetCameraExposureAndGain(const int& order, double& exposure, int& gain);
    RETSTATUS SetExposureTime(const int& order, const double& exposure);
    RETSTATUS GetExposureTime(const int& order, double& exposure);
    RETSTATUS SetCameraGain(const int& order, const int& gain);
    RETSTATUS GetCameraGain(const int& order, int& gain);
    /// `serial` must be null. It receives a `new[]` text that the caller owns.
    RETSTATUS GetCameraSerialNumber(const int& index, char*& serial);
    RETSTATUS GetCameraResolution(const int& index, int& width, int& height);
    /// Takes no lock.
    RETSTATUS GetConnectCameraCount(int& count) const;

    /// The exposures and gains that a reconnection would write back now.
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

    /// Passes over the cameras that Close has already destroyed. A status callback can run beside
    /// it. Allocates nothing.
    template <class Action>
    void ForEachCamera(Action action) KORVEX_REQUIRES(m_csDevice);
    /// Null without cameras.
    CPhysicalCameraThread* FirstCamera() const KORVEX_REQUIRES(m_csDevice);
    /// The number of channel codes: one for each entry of the serial list.
    int ChannelCount() const KORVEX_REQUIRES(m_csDevice);

    os::CriticalSection& m_csDevice;
    PhysicalCameraThreadListener& m_listener;
    FramePath& m_frames;

    std::vector<std::unique_ptr<CPhysicalCameraThread>> m_cameras KORVEX_GUARDED_BY(m_csDevice);
    std::atomic<int> m_cameraCount{0};  // size of m_cameras, for readers without the lock
    /// Width and height of each camera.
    std::vector<int> m_cameraParams KORVEX_GUARDED_BY(m_csDevice);
    /// The channel code of each entry of the serial list.
    std::vector<int> m_cameraChannels KORVEX_GUARDED_BY(m_csDevice);
    /// The serial of each run of equal neighbours.
    std::vector<std::string> m_cameraSerials KORVEX_GUARDED_BY(m_csDevice);
    /// One for each camera.
    std::deque<os::Event> m_frameEvents KORVEX_GUARDED_BY(m_csDevice);
    unsigned m_allCamerasMask KORVEX_GUARDED_BY(m_csDevice) = 0;
    RememberedParameters m_remembered KORVEX_GUARDED_BY(m_csDevice);
};

}  // namespace Korvex3Sync
