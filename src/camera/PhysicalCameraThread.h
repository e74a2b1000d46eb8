#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <utility>

#include "camera/GrabCounters.h"
#include "camera/PauseLock.h"
#include "camera/PhysicalCameraThreadListener.h"
#include "platform/include/zr3DCamera.h"
#include "platform/os/CriticalSection.h"
#include "platform/os/Event.h"
#include "platform/os/Thread.h"

namespace Korvex3Sync {

/// Receives each accepted frame of a camera on its grab thread. `image` is a buffer of the camera
/// library, valid only during the call. `width`, `height` and `channels` describe one image.
using CameraFrameCallback = void (*)(void* const& context, const int& cameraId,
                                     unsigned char* const& image, const int& width,
                                     const int& height, const int& channels);

/// One industrial camera and its grab thread.
///
/// The grab thread snaps without a break and passes each valid frame to the frame callback. It
/// holds the pause lock and, inside it, the snap lock for a whole iteration, including the
/// callback.
///
/// Who uses what: the owner (one caller at a time, under the manager's device lock) opens, closes,
/// pauses and sets parameters. The pause lock guards what the owner shares with the grab thread:
/// the camera handle, the image and the callback. Only the owner changes the handle, with the pause
/// lock held or during a pause, and so it may read the handle without the lock. Camera id and
/// counters are set before the grab thread starts. Flags that both read are atomic.
///
/// Lock order: pause lock, then snap lock. The functions do not throw; a bool result is true for
/// success.
class CPhysicalCameraThread {
public:
    explicit CPhysicalCameraThread(PhysicalCameraThreadListener* listener);
    ~CPhysicalCameraThread();
    CPhysicalCameraThread(const CPhysicalCameraThread&) = delete;
    CPhysicalCameraThread& operator=(const CPhysicalCameraThread&) = delete;

    // Camera instance and opening (PhysicalCameraThread.cpp).

    /// Creates the library instance for a type or serial; null means the serial of the last open.
    bool InializeCamera(const char* const& devId);
    bool ReleaseCamera();
    /// Opens the camera; `width` and `height` are the size of one image. Stops and closes it first
    /// if necessary.
    bool OpenCamera(const char* const& serial, const int& width, const int& height);
    /// Closes and reopens the camera with the serial and size of the last open. The grab thread
    /// must be paused.
    bool ReOpenCamera();
    /// Stops the thread, closes the camera and removes the frame callback.
    bool CloseCamera();
    bool StartCamera();
    /// Ignored without a camera handle.
    void SetCameraID(int id);
    /// Ignored while no camera ID is set. Waits for the running iteration of the grab thread.
    void SetScanCallBackFunction(CameraFrameCallback callback, void* context);
    /// The number of sensors that share this camera, initially 1. Set it before the thread starts.
    void SetCameraComplexInfo(int count) { m_complexInfo = count; }
    int CameraComplexInfo() const { return m_complexInfo; }
    /// The counters of the grab thread; not null. Without this call it has its own. Set them before
    /// the thread starts.
    void CountInto(std::shared_ptr<GrabCounters> counters) { m_counters = std::move(counters); }

    // Parameters (ParameterAccess.cpp), in the units of the camera: microseconds, gain steps.

    bool GetResolution(int& width, int& height);
    bool SetExposure(const long& time);
    /// True if there is a camera handle, even if the library fails.
    bool GetExposure(long& time);
    bool SetGain(int gain);
    bool GetGain(int& gain);
    bool SetCameraParam5(int value);
    bool GetDeviceTotal(int& total);
    std::string GetSerial();
    bool ResetCameraState();

    // Thread control (ThreadControl.cpp).

    bool StartThread();
    /// Waits without limit for the running iteration to end. End a pause first.
    bool StopThread();
    /// Returns when the running iteration has ended; then the thread waits.
    void PauseThread();
    void ResumeThread();
    /// Ends a pause, whichever thread made it, before destruction.
    void ResetStatusToInitialize();

private:
    /// Makes the grab loop leave the camera alone for 10 ms after each iteration.
    class Yield;

    void GrabLoop();
    /// The camera handle, for the owner, which alone changes it.
    void* Camera() const KORVEX_NO_THREAD_SAFETY_ANALYSIS { return m_camera; }
    void DestroyInstance();
    void SnapOnce(zr3DCamera::ZR_IMG_FORMAT mode) KORVEX_REQUIRES(m_csPause, m_csSnap);
    void Dispatch(int width, int height, int channels) KORVEX_REQUIRES(m_csPause, m_csSnap);

    os::CriticalSection m_csSnap;
    PauseLock m_csPause;
    void* m_camera KORVEX_GUARDED_BY(m_csPause) = nullptr;
    std::atomic<bool> m_bRun{false};
    bool m_bOpen = false;
    os::Thread m_hThread;
    os::Event m_stopped;
    std::atomic<bool> m_bYield{false};
    unsigned char* m_image KORVEX_GUARDED_BY(m_csPause) = nullptr;  // of the last snap
    std::string m_serial;
    int m_width = 0;
    int m_height = 0;
    int m_cameraID = -1;
    int m_complexInfo = 1;
    CameraFrameCallback m_callback KORVEX_GUARDED_BY(m_csPause) = nullptr;
    void* m_callbackContext KORVEX_GUARDED_BY(m_csPause) = nullptr;
    std::shared_ptr<GrabCounters> m_counters = std::make_shared<GrabCounters>();
    [[maybe_unused]] PhysicalCameraThreadListener* const m_listener;
};

class CPhysicalCameraThread::Yield {
public:
    explicit Yield(CPhysicalCameraThread& camera) : m_yield(camera.m_bYield) { m_yield = true; }
    ~Yield() { m_yield = false; }
    Yield(const Yield&) = delete;
    Yield& operator=(const Yield&) = delete;

private:
    std::atomic<bool>& m_yield;
};

}  // namespace Korvex3Sync
