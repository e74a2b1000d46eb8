#include "soak/RandomCalls.h"

#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "platform/os/Clock.h"
#include "soak/Dice.h"

namespace Korvex3Sync::tests::soak {
namespace {

/// What a call may run at the same time as.
enum class Beside {
    Anything,   // any other call
    OtherKinds  // not another of these: ends the connection to the devices or takes a snapshot
};

struct Call {
    const char* name;
    Beside beside;
    std::function<void(void* const& handle, Dice& dice)> make;
};

constexpr std::chrono::milliseconds kLongestRest{2};
constexpr int kUserPage = 256;
/// One call in this many stops the stream for a while.
constexpr int kSeldomCall = 120;

int Number(Dice& dice) {
    static const std::vector<int> odd{-1, 0, 101, 255, 256, 70000, -2147483647 - 1, 2147483647};
    return dice.Once(8) ? dice.OneOf(odd) : dice.From(0, 100);
}

template <class Enumeration>
Enumeration Value(Dice& dice) {
    return static_cast<Enumeration>(dice.From(-1, 8));
}

void Free(std::vector<unsigned char*>& images) {
    for (unsigned char* image : images) {
        delete[] image;
    }
}

void TakeSnapshot(void* const& handle, Dice& dice) {
    std::vector<unsigned char*> images;
    int width = 0;
    int height = 0;
    double exposure = dice.From(0, 260) / 10.0;
    int gain = dice.From(-1, 20);
    SnapColorImage(handle, images, width, height, dice.From(-1, 4), exposure, gain,
                   Value<CONTROLROUTE>(dice));
    Free(images);
}

void TakeIrSnapshot(void* const& handle, Dice& dice) {
    std::vector<unsigned char*> images;
    int width = 0;
    int height = 0;
    std::vector<double> exposures(static_cast<std::size_t>(dice.Once(4) ? 1 : 2), 3.0);
    std::vector<int> gains(2, dice.From(0, 16));
    SnapColorImageForIR(handle, images, width, height, dice.From(0, 3), exposures, gains,
                        Value<CONTROLROUTE>(dice));
    Free(images);
}

void ReadSerial(void* const& handle, Dice& dice) {
    char* serial = nullptr;
    GetCameraSerialNumber(handle, dice.From(-1, 3), serial);
    delete[] serial;
}

void ReadUserPage(void* const& handle, Dice& dice) {
    char page[kUserPage] = {};
    char* data = page;
    ReadUserInfomation(handle, dice.From(-1, 16), data);
}

void WriteUserPage(void* const& handle, Dice& dice) {
    const std::string data(kUserPage, 'k');
    WriteUserInfomation(handle, dice.From(-1, 16), data.c_str(), dice.From(0, kUserPage));
}

const char* Type(Dice& dice) {
    static const std::vector<const char*> types{"KV00", "KV00", "KV99", "XX00", "", nullptr};
    return dice.OneOf(types);
}

void FindCameras(void* const&, Dice& dice) {
    std::vector<char*> serials;
    std::vector<int> widths;
    std::vector<int> heights;
    std::vector<bool> isColor;
    int count = 0;
    GetCamerasInformation(Type(dice), serials, widths, heights, isColor, count);
    for (const char* serial : serials) {
        delete[] serial;
    }
}

void CountCameras(void* const&, Dice& dice) {
    int count = 0;
    GetCameraCount(Type(dice), count);
}

void ReadFirmware(void* const&, Dice& dice) {
    static const std::vector<const char*> boards{"", "VH3267-0001", "VH3267-9999", nullptr};
    std::string version;
    GetFirewareVersion(dice.OneOf(boards), version);
}

/// Removes the scan callback for a moment and sets it again, because the scans need it.
void SwapScanCallback(void* const& handle, Dice& dice) {
    const bool on = dice.Once(2);
    SoakHead::SetScanCallback(handle, on, dice.Once(2));
    std::this_thread::sleep_for(std::chrono::milliseconds(dice.From(0, 5)));
    SoakHead::SetScanCallback(handle, true);
}

/// Leaves what it sets. The first setting of a handle was made before anybody else had it.
void ChangeStatusCallback(void* const& handle, Dice& dice) {
    const bool on = !dice.Once(3);
    SoakHead::SetStatusCallback(handle, on, !dice.Once(4));
}

std::vector<Call> OrdinaryCalls() {
    constexpr Beside any = Beside::Anything;
    using H = void* const&;
    using D = Dice&;
    return {
        {"Project", any, [](H h, D d) { Project(h, Value<PROJECTWORKTYPES>(d)); }},
        {"SetProjectorBrightness", any, [](H h, D d) { SetProjectorBrightness(h, Number(d)); }},
        {"GetProjectorBrightness", any,
         [](H h, D) {
             int v = 0;
             GetProjectorBrightness(h, v);
         }},
        {"EnableBlueLaser", any,
         [](H h, D d) { EnableBlueLaser(h, Value<LASERWORKMODE>(d), d.Once(2)); }},
        {"EnableIRLaser", any, [](H h, D d) { EnableIRLaser(h, d.Once(2)); }},
        {"SetIRLaserBrightnessLevel", any,
         [](H h, D d) { SetIRLaserBrightnessLevel(h, Number(d)); }},
        {"SetStrobeControlledByTrigger", any,
         [](H h, D d) {
             SetStrobeControlledByTrigger(h, Value<CONTROLROUTE>(d), Value<STROBE_STATE>(d));
         }},
        {"SetStrobeDutioRatio", any,
         [](H h, D d) { SetStrobeDutioRatio(h, Number(d), Number(d), Number(d)); }},
        {"GetStrobeDutioRatio", any,
         [](H h, D) {
             int a = 0, b = 0, c = 0;
             GetStrobeDutioRatio(h, a, b, c);
         }},
        {"SetLaserLineDutioRatio", any, [](H h, D d) { SetLaserLineDutioRatio(h, Number(d)); }},
        {"GetLaserLineDutioRatio", any,
         [](H h, D) {
             int v = 0;
             GetLaserLineDutioRatio(h, v);
         }},
        {"SetProjectDutioRatio", any, [](H h, D d) { SetProjectDutioRatio(h, Number(d)); }},
        {"GetProjectDutioRatio", any,
         [](H h, D) {
             int v = 0;
             GetProjectDutioRatio(h, v);
         }},
        {"SetIRLaserDutioRatio", any, [](H h, D d) { SetIRLaserDutioRatio(h, Number(d)); }},
        {"GetIRLaserDutioRatio", any,
         [](H h, D) {
             int v = 0;
             GetIRLaserDutioRatio(h, v);
         }},
        {"SetStrobeWorkTime", any, [](H h, D d) { SetStrobeWorkTime(h, Number(d), Number(d)); }},
        {"GetStrobeWorkTime", any,
         [](H h, D) {
             int a = 0, b = 0;
             GetStrobeWorkTime(h, a, b);
         }},
        {"SetLaserLineWorkTime", any, [](H h, D d) { SetLaserLineWorkTime(h, Number(d)); }},
        {"GetLaserLineWorkTime", any,
         [](H h, D) {
             int v = 0;
             GetLaserLineWorkTime(h, v);
         }},
        {"SetProjectWorkTime", any, [](H h, D d) { SetProjectWorkTime(h, Number(d)); }},
        {"GetProjectWorkTime", any,
         [](H h, D) {
             int v = 0;
             GetProjectWorkTime(h, v);
         }},
        {"SetIRLaserWorkTime", any, [](H h, D d) { SetIRLaserWorkTime(h, Number(d)); }},
        {"GetIRLaserWorkTime", any,
         [](H h, D) {
             int v = 0;
             GetIRLaserWorkTime(h, v);
         }},
        {"SetVideoTriggerPeriod", any, [](H h, D d) { SetVideoTriggerPeriod(h, d.From(-1, 4)); }},
        {"GetVideoTriggerPeriod", any,
         [](H h, D) {
             int v = 0;
             GetVideoTriggerPeriod(h, v);
         }},
        {"EnableVideoTrigger", any,
         [](H h, D d) { EnableVideoTrigger(h, Value<CAMERA_TRIGGER_MODE>(d), !d.Once(4)); }},
        {"SetDistanceIndicate", any,
         [](H h, D d) { SetDistanceIndicate(h, Value<DISTANCESTATUS>(d)); }},
        {"EnableHeartbeat", any,
         [](H h, D d) {
             bool on = d.Once(2);
             EnableHeartbeat(h, on);
         }},
        {"GetConnectCameraCount", any,
         [](H h, D) {
             int n = 0;
             GetConnectCameraCount(h, n);
         }},
        {"GetCameraSerialNumber", any, ReadSerial},
        {"GetCameraResolution", any,
         [](H h, D d) {
             int w = 0, v = 0;
             GetCameraResolution(h, d.From(-1, 3), w, v);
         }},
        {"SetCameraExposureAndGain", any,
         [](H h, D d) {
             SetCameraExposureAndGain(h, d.From(-1, 4), d.From(0, 300) / 10.0, Number(d));
         }},
        {"GetCameraExposureAndGain", any,
         [](H h, D d) {
             double e = 0;
             int g = 0;
             GetCameraExposureAndGain(h, d.From(0, 3), e, g);
         }},
        {"ReadUserInfomation", any, ReadUserPage},
        {"WriteUserInfomation", any, WriteUserPage},
        {"SetScanCallBackFunction", any, SwapScanCallback},
        {"SetStatusCallBackFunction", any, ChangeStatusCallback},
        {"GetCamerasInformation", any, FindCameras},
        {"GetCameraCount", any, CountCameras},
        {"IsConnectedOnU3", any,
         [](H, D) {
             bool onU3 = false;
             IsConnectedOnU3("", onU3);
         }},
        {"GetFirewareVersion", any, ReadFirmware},
        {"GetScanStatistics", any,
         [](H h, D) {
             ScanStatistics s;
             GetScanStatistics(h, s);
         }},
    };
}

std::vector<Call> SeldomCalls() {
    constexpr Beside other = Beside::OtherKinds;
    using H = void* const&;
    using D = Dice&;
    return {
        {"ReconnectDevice", other, [](H h, D) { ReconnectDevice(h); }},
        {"ReconnectDevice(two flags)", other,
         [](H h, D d) { ReconnectDevice(h, d.Once(2), d.Once(2)); }},
        {"CloseDeviceCamera", other, [](H h, D) { CloseDeviceCamera(h); }},
        {"CloseDeviceCamera, ReconnectDevice", other,
         [](H h, D) {
             CloseDeviceCamera(h);
             ReconnectDevice(h);
         }},
        {"SnapColorImage", other, TakeSnapshot},
        {"SnapColorImageForIR", other, TakeIrSnapshot},
    };
}

}  // namespace

void RandomCalls::Run(const std::atomic<bool>& stop, Watchdog::Watched& watched) {
    const std::vector<Call> ordinary = OrdinaryCalls();
    const std::vector<Call> seldom = SeldomCalls();
    for (std::uint64_t step = 0; !stop; ++step) {
        Dice dice(m_seed, Thrower::Caller, step);
        const Call& call = dice.OneOf(dice.Once(kSeldomCall) ? seldom : ordinary);
        {
            const std::shared_lock lock(m_head.using_);
            watched.Doing(call.name);
            if (m_head.handle != nullptr) {
                std::unique_lock turn(m_head.turn, std::defer_lock);
                if (call.beside == Beside::OtherKinds) {
                    turn.lock();
                }
                call.make(m_head.handle, dice);
                ++m_counts[call.name];
            }
        }
        watched.Doing("rests");
        std::this_thread::sleep_for(
            std::chrono::milliseconds(dice.From(0, static_cast<int>(kLongestRest.count()))));
    }
}

}  // namespace Korvex3Sync::tests::soak
