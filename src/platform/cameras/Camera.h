#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

namespace Korvex3Sync::cameras {

/// A call of the fixed header (zr3DCamera.h) on its way to a driver.
struct LibraryCall {
    const char* name;
    std::string arguments;  // separated by ", ", without the handle
    const char* succeeded;  // what the caller gets for success, as text
    const char* failed;
};

/// One library instance, made by a driver, in plain terms: the library has decoded the parameters
/// of the fixed header. Every operation gives true for success and writes its outputs on success
/// only. Thread-safe: every function may be called beside every other one, also beside Release,
/// which makes a snap in progress end at once.
class Camera {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    Camera() = default;
    virtual ~Camera() = default;
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    /// Runs the work of one call, which calls other functions of this instance, and gives its
    /// result. A driver that records calls, or keeps some from happening, does so here.
    virtual bool Run(const LibraryCall& call, const std::function<bool()>& work) {
        static_cast<void>(call);
        return work();
    }

    /// Closes for good; the instance is then no longer found by its handle.
    virtual bool Release() = 0;
    /// Attached cameras that the type or serial of this instance names.
    virtual bool CountDevices(int& total) = 0;
    /// 0 x 0 opens the native size. An instance that is open is not opened again.
    virtual bool OpenIndex(int index, int width, int height) = 0;
    virtual bool OpenSerial(std::string_view serial, int width, int height) = 0;
    /// Succeeds on an instance that is not open.
    virtual bool Close() = 0;
    virtual bool Start() = 0;
    /// Gives the next frame: a buffer of at least 2 x width x height bytes that stays valid until
    /// the next snap, close or release. Blocks until the deadline at most. On failure `image` is
    /// null, except for a frame that is refused (torn, incomplete): then it is that frame's buffer.
    virtual bool Snap(Deadline deadline, unsigned char*& image) = 0;
    virtual bool Serial(std::string& serial) = 0;
    /// Size of one image in pixels.
    virtual bool Resolution(int& width, int& height) = 0;
    virtual bool HasColor(bool& color) = 0;
    virtual bool GainRange(int& low, int& high) = 0;
    /// Camera orders are 0 to 3. Exposure and gain belong to the selected one.
    virtual bool SelectOrder(int order) = 0;
    virtual bool SetExposure(long microseconds) = 0;
    virtual bool Exposure(long& microseconds) = 0;
    virtual bool SetGain(int gain) = 0;
    virtual bool Gain(int& gain) = 0;
    /// Selects the order and sets both; on failure nothing changes.
    virtual bool SelectAndSet(int order, long exposureMicroseconds, int gain) = 0;
    /// Whether the camera is attached; the instance need not be open.
    virtual bool IsPresent() = 0;
    /// Drops the frames that wait.
    virtual bool ResetState() = 0;
    virtual bool UnlockOthers() = 0;
};

}  // namespace Korvex3Sync::cameras
