#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <string_view>

namespace Korvex3Sync::cameras {

/// A call of a function of zr3DCamera.h, as passed to a driver.
struct LibraryCall {
    const char* name;
    std::string arguments;  // separated by ", ", without the handle
    const char* succeeded;  // the caller's result for success, as text
    const char* failed;
};

/// A library instance, created by a driver. The library has already decoded the parameters of
/// zr3DCamera.h, so the operations here have plain units. Every operation returns true for success
/// and writes its outputs only then. Thread-safe: all functions may be called at the same time.
/// Release ends a running snap at once.
class Camera {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    Camera() = default;
    virtual ~Camera() = default;
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    /// Runs the work of one call, which calls other functions of this instance, and returns its
    /// result. A driver can override it to record or block calls.
    virtual bool Run(const LibraryCall& call, const std::function<bool()>& work) {
        static_cast<void>(call);
        return work();
    }

    /// Closes the camera for good. Afterwards the handle of the instance is invalid.
    virtual bool Release() = 0;
    /// The number of attached cameras that match the type or serial of this instance.
    virtual bool CountDevices(int& total) = 0;
    /// 0 x 0 opens the native size. Fails if the instance is already open.
    virtual bool OpenIndex(int index, int width, int height) = 0;
    virtual bool OpenSerial(std::string_view serial, int width, int height) = 0;
    /// Also succeeds on an instance that is not open.
    virtual bool Close() = 0;
    virtual bool Start() = 0;
    /// Gets the next frame: a buffer of at least 2 x width x height bytes that stays valid until
    /// the next snap, close or release. Blocks at most until the deadline. On failure `image` is
    /// null, except for a frame that is refused as torn or incomplete: then it is the buffer of
    /// that frame.
    virtual bool Snap(Deadline deadline, unsigned char*& image) = 0;
    virtual bool Serial(std::string& serial) = 0;
    /// Size of one image in pixels.
    virtual bool Resolution(int& width, int& height) = 0;
    virtual bool HasColor(bool& color) = 0;
    virtual bool GainRange(int& low, int& high) = 0;
    /// Camera orders are 0 to 3. Exposure and gain apply to the selected one.
    virtual bool SelectOrder(int order) = 0;
    virtual bool SetExposure(long microseconds) = 0;
    virtual bool Exposure(long& microseconds) = 0;
    virtual bool SetGain(int gain) = 0;
    virtual bool Gain(int& gain) = 0;
    /// Selects the order and sets both; on failure nothing changes.
    virtual bool SelectAndSet(int order, long exposureMicroseconds, int gain) = 0;
    /// Whether the camera is attached; the instance need not be open.
    virtual bool IsPresent() = 0;
    /// Drops the waiting frames.
    virtual bool ResetState() = 0;
    virtual bool UnlockOthers() = 0;
};

}  // namespace Korvex3Sync::cameras
