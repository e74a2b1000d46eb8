#include "soak/Chaos.h"

#include <chrono>
#include <thread>
#include <vector>

#include "soak/Dice.h"

namespace Korvex3Sync::tests::soak {
namespace {

using std::chrono::milliseconds;
using virtual_head::FaultKind;
using virtual_head::FaultOrder;

/// Calls that may fail, except closing and releasing ones: what a library refuses to release would
/// look like a leak.
const std::vector<std::string>& CallsThatFail() {
    static const std::vector<std::string> calls{"zr3DInitHidDev",
                                                "zr3DQueryCurrentStatus",
                                                "zr3DSetVideoTrigleMode",
                                                "zr3DEnableHeartbeat",
                                                "zr3DSetLaserEnable",
                                                "zr3DResetDevice",
                                                "zr3DProject",
                                                "OpenCamera",
                                                "StartCamera",
                                                "SnapShot",
                                                "SetCameraIntParam",
                                                "GetResolution",
                                                "ResetCameraState",
                                                "GetDeviceType",
                                                "GetExposureTime"};
    return calls;
}

/// Calls that may be slow or hang, including closing ones.
const std::vector<std::string>& CallsThatHang() {
    static const std::vector<std::string> calls{"zr3DInitHidDev",
                                                "zr3DQueryCurrentStatus",
                                                "zr3DSetVideoTrigleMode",
                                                "zr3DExitHidDev",
                                                "OpenCamera",
                                                "CloseCamera",
                                                "StartCamera",
                                                "SnapShot",
                                                "SetCameraIntParam"};
    return calls;
}

/// Faults during which a scan continues.
const std::vector<FaultKind>& PassingKinds() {
    static const std::vector<FaultKind> kinds{
        FaultKind::Fail,         FaultKind::Slow,       FaultKind::BoardLate,
        FaultKind::LoseMono,     FaultKind::LoseColor,  FaultKind::LoseBoth,
        FaultKind::TearMono,     FaultKind::TearColor,  FaultKind::MisSizeMono,
        FaultKind::MisSizeColor, FaultKind::RepeatMono, FaultKind::RepeatColor,
        FaultKind::Delay,        FaultKind::SkipKeys};
    return kinds;
}

/// Faults that end the stream until a reconnection, or block all threads.
const std::vector<FaultKind>& EndingKinds() {
    static const std::vector<FaultKind> kinds{FaultKind::Hang, FaultKind::BoardVanish,
                                              FaultKind::BoardMute, FaultKind::CameraVanish,
                                              FaultKind::CameraStop};
    return kinds;
}

/// One fault in this many ends the stream, so that most of the time is spent scanning.
constexpr int kSeldom = 30;

/// A random fault: its kind, and how long or how often it applies.
FaultOrder Throw(Dice& dice) {
    FaultOrder order;
    order.kind = dice.OneOf(dice.Once(kSeldom) ? EndingKinds() : PassingKinds());
    const milliseconds lasting(dice.From(5, 120));
    switch (order.kind) {
        case FaultKind::Fail:
            order.call = dice.OneOf(CallsThatFail());
            order.times = dice.From(1, 3);
            break;
        case FaultKind::Slow:
            order.call = dice.OneOf(CallsThatHang());
            order.times = dice.From(1, 3);
            order.extra = milliseconds(dice.From(1, 30));
            break;
        case FaultKind::Hang:
            order.call = dice.OneOf(CallsThatHang());
            order.lasting = lasting;
            break;
        case FaultKind::BoardVanish:
        case FaultKind::BoardMute:
        case FaultKind::CameraVanish:
            order.lasting = lasting;
            break;
        case FaultKind::BoardLate:
            order.times = dice.From(1, 5);
            order.extra = milliseconds(dice.From(1, 50));
            break;
        case FaultKind::Delay:
            order.byTriggers = dice.From(1, 4);
            break;
        default:
            order.times = dice.From(1, 10);
            break;
    }
    return order;
}

}  // namespace

void Chaos::WarmUp() {
    FaultOrder order;
    order.kind = FaultKind::BoardMute;
    order.lasting = milliseconds(1);
    m_head->GetFaults().Order(order);
}

void Chaos::Run(const std::atomic<bool>& stop, Watchdog::Watched& watched) {
    for (std::uint64_t step = 0; !stop; ++step) {
        Dice dice(m_seed, Thrower::Faults, step);
        {
            watched.Doing("waits for the calm to end");
            const std::lock_guard lock(m_mutex);
            const FaultOrder order = Throw(dice);
            watched.Doing(Name(order.kind));
            if (m_head->GetFaults().Order(order)) {
                ++m_counts[Name(order.kind)];
            }
        }
        std::this_thread::sleep_for(milliseconds(dice.From(1, 40)));
    }
}

Chaos::Calm::Calm(Chaos& chaos) : m_lock(chaos.m_mutex) {
    virtual_head::Faults& faults = chaos.m_head->GetFaults();
    faults.Clear();
    faults.ReleaseHangs();
    faults.Order({FaultKind::BoardReturn});
    faults.Order({FaultKind::CameraReturn});
}

}  // namespace Korvex3Sync::tests::soak
