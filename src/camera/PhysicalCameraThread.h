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

/// Receives each accepted frame of a camera on its grab thread. `image` is the camera library's own
/// buffer and valid only during the call; `width`, `height` and `channels` are those of one image.
using CameraFrameCallback = void (*)(void* const& context, const int& cameraId,
                                     unsigned char* const& image, const int& width,
                                     const int& height, const int& channels);

/// One industrial camera and its grab thread.
///
/// The grab thread snaps back to back and hands each valid frame to the frame callback. It holds
/// the pause lock and, inside it, the snap lock for a whole iteration, callback included.
///
/// Who touches what: the owner (one caller at a time, under the manager's device lock) opens,
/// closes, pauses and sets parameters. The pause lock guards what it shares with the grab thread:
/// the camera handle, the image and the callback. The owner alone changes the handle, with the
/// pause lock or while a pause stands, and therefore reads it without. Camera id and counters are
/// set before the grab thread starts. Flags that both read are atomic.
///
/// Lock order: pause lock, then snap lock. Nothing is thrown; results are bool.
class CPhysicalCameraThread {
public:
    explicit CPhysicalCameraThread(PhysicalCameraThreadListener* listener);
    ~CPhysicalCameraThread();
    CPhysicalCameraThread(const CPhysicalCameraThread&) = delete;
    CPhysicalCameraThread& operator=(const CPhysicalCameraThread&) = delete;

    // Camera instance and opening (PhysicalCameraThread.cpp).

    /// Creates the library instance for a type or serial; null takes the serial of the last open.
    bool InializeCamera(const char* const& devId);
    bool ReleaseCamera();
    /// Opens with the size of one image; stops and closes first where needed.
    bool OpenCamera(const char* const& serial, const int& width, const int& height);
    /// Closes and opens again in place, with serial and size of the last open. The grab thread must
    /// be paused.
    bool ReOpenCamera();
    /// Stops the thread, closes, and forgets the frame callback.
    bool CloseCamera();
    bool StartCamera();
    /// Ignored without a camera handle.
    void SetCameraID(int id);
    /// Ignored while no camera ID is set. Waits for the running iteration of the grab thread.
    void SetScanCallBackFunction(CameraFrameCallback callback, void* context);
    /// How many logical channels this one camera serves; 1 until set. To be set before the thread
    /// starts.
    void SetCameraComplexInfo(int count) { m_complexInfo = count; }
    int CameraComplexInfo() const { return m_complexInfo; }
    /// Where the grab thread counts, instead of an object of its own. To be set before the thread
    /// starts; not null.
    void CountInto(std::shared_ptr<GrabCounters> counters) { m_counters = std::move(counters); }

    // Parameters (ParameterAccess.cpp). Units are the camera's: microseconds, gain steps.

    bool GetResolution(int& width, int& height);
    bool SetExposure(const long& time);
    /// True whatever the library answers, where there is a camera.
    bool GetExposure(long& time);
    bool SetGain(int gain);
    bool GetGain(int& gain);
    bool SetCameraParam5(int value);
    bool GetDeviceTotal(int& total);
    std::string GetSerial();
    bool ResetCameraState();

    // Thread control (ThreadControl.cpp).

    bool StartThread();
    /// Waits without limit for the end of the running iteration. A pause must have been ended.
    bool StopThread();
    /// Returns when the running iteration is over; from then on the thread waits.
    void PauseThread();
    void ResumeThread();
    /// Ends a pause, made by any thread, before destruction.
    void ResetStatusToInitialize();

private:
    /// Makes the grab loop leave the camera alone for 10 ms after each iteration.
    class Yield;

    void GrabLoop();
    /// The camera handle, for the owner: nobody else changes it.
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

inline constexpr char kPhysicalCameraThreadLog[] = "camera/PhysicalCameraThread";

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
