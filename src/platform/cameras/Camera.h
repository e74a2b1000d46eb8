#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace Korvex3Sync::cameras {

inline constexpr int kOk = 0;
inline constexpr int kFailed = -1;
/// Colour modes of the sensors.
inline constexpr int kMonoMode = 1;
inline constexpr int kColorMode = 16;
/// The integer parameter that takes words of exposure, gain and camera order.
inline constexpr int kOrderParameter = 5;
/// How long a snap waits for a frame.
inline constexpr std::chrono::milliseconds kSnapLimit{100};

/// One library instance, made by a driver. An int result is kOk or kFailed; outputs are written on
/// success only. Thread-safe: every function may be called beside every other one, also beside
/// Release, which makes a snap in progress end at once.
class Camera {
public:
    Camera() = default;
    virtual ~Camera() = default;
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;

    /// Closes for good; the instance is then no longer found by its handle.
    virtual int Release() = 0;
    virtual int DeviceTotal(int& total) = 0;
    virtual int OpenIndex(int index, int width, int height) = 0;
    virtual int OpenSerial(std::string_view serial, int width, int height) = 0;
    virtual int Close() = 0;
    virtual int Start(double value) = 0;
    /// Blocks at most kSnapLimit. On failure `image` is null, but for a frame that is refused
    /// (torn, incomplete): then it is that frame's buffer.
    virtual int Snap(unsigned char*& image) = 0;
    virtual int Serial(std::string& serial) = 0;
    virtual int Resolution(int& width, int& height) = 0;
    virtual int ColorMode(int& mode) = 0;
    virtual int GainRange(int& low, int& high) = 0;
    virtual int SetExposure(long microseconds) = 0;
    virtual int Exposure(long& microseconds) = 0;
    virtual int SetGain(int gain) = 0;
    virtual int Gain(int& gain) = 0;
    virtual bool SetIntParameter(int parameter, int value) = 0;
    virtual bool DeviceType(int& type) = 0;
    virtual bool ResetState() = 0;
    virtual bool UnlockOthers() = 0;
};

}  // namespace Korvex3Sync::cameras
