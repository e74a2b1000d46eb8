#include "platform/include/zr3DHandiDLPdev.h"
#include "platform/os/Log.h"
#include "sync/BoardSelectors.h"
#include "sync/BoardTranslation.h"
#include "sync/ManagerSync.h"

namespace Korvex3Sync {

namespace board = zr3DHandiDLPdev;

namespace {

constexpr auto& kLog = kManagerSyncLog;
/// A strobe duty ratio that keeps the value last asked for.
constexpr int kKeepRatio = -1;

using Remembered = RememberedSettings;

}  // namespace

RETSTATUS IManagerSync::GetFirewareVersion(const char* pcbSerial, std::string& version) {
    const DeviceGuard device(this, m_csDevice);  // no reconnection closes it in between
    const RETSTATUS open = EnsureBoardOpen(pcbSerial);
    if (open != STATUS_SUCCESS) {
        return open;
    }
    return BoardOperation(
        DeviceLost::Ignored, [](Remembered&) {},
        [&](void* h) { return board::zr3DQueryProjectorFirewareVersion(h, version); });
}

RememberedSettings IManagerSync::SettingsToRestore() {
    os::CriticalSectionGuard device(m_csDevice);
    return m_remembered;
}

RETSTATUS IManagerSync::SetStrobeControlledByTrigger(const CONTROLROUTE& route,
                                                     const STROBE_STATE& state) {
    const auto boardRoute = ToBoard(route);
    const auto boardState = ToBoard(state);
    return BoardOperation(
        DeviceLost::Refuses,
        [&](Remembered& r) {
            r.strobeRoute = *boardRoute;
            r.strobeState = *boardState;
        },
        [&](void* h) { return board::zr3DOpenOrCloseStrobeFlicker(h, *boardRoute, *boardState); },
        boardRoute && boardState ? Parameters::Good : Parameters::Bad);
}

RETSTATUS IManagerSync::EnableBlueLaser(const LASERWORKMODE& mode, const bool& enable) {
    return BoardOperation(
        DeviceLost::Refuses,
        [&](Remembered& r) {
            r.blueLaserEnable = enable;
            r.blueLaserMode = ToBoard(mode);
        },
        [&](void* h) { return board::zr3DSetLaserEnable(h, enable, ToBoard(mode)); });
}

RETSTATUS IManagerSync::EnableIRLaser(const bool& enable) {
    return BoardOperation(
        DeviceLost::Refuses, [&](Remembered& r) { r.irLaserEnable = enable; },
        [&](void* h) { return board::zr3DSetIRLaserEnable(h, enable); });
}

RETSTATUS IManagerSync::SetIRLaserBrightnessLevel(const int& level) {
    return BoardOperation(
        DeviceLost::Ignored, [&](Remembered& r) { r.irLaserLevel = level; },
        [&](void* h) { return board::zr3DSetIRLaserLevel(h, level); });
}

RETSTATUS IManagerSync::SetVideoTriggerPeriod(const int& period) {
    return BoardOperation(
        DeviceLost::Refuses, [&](Remembered& r) { r.triggerPeriod = period; },
        [&](void* h) { return board::zr3DSetVideoTriggerPeriod(h, period); });
}

RETSTATUS IManagerSync::GetVideoTriggerPeriod(int& period) {
    return BoardQuery([&](void* h) { return board::zr3DQueryTriggerPeriod(h, period); });
}

RETSTATUS IManagerSync::SetProjectorBrightness(const int& brightness) {
    return BoardOperation(
        DeviceLost::Refuses, [&](Remembered& r) { r.projectorBrightness = brightness; },
        [&](void* h) { return board::zr3DSetProjectorBrightness(h, brightness); });
}

RETSTATUS IManagerSync::GetProjectorBrightness(int& brightness) {
    return BoardQuery([&](void* h) { return board::zr3DQueryProjectorBrightness(h, brightness); });
}

RETSTATUS IManagerSync::EnableVideoTrigger(const CAMERA_TRIGGER_MODE& mode, const bool& enable) {
    const board::MASK_TRIGGER_MODE boardMode = ToBoard(mode, enable);
    return BoardOperation(
        DeviceLost::Refuses, [&](Remembered& r) { r.triggerMode = boardMode; },
        [&](void* h) { return WriteTriggerMode(h, boardMode); });
}

RETSTATUS IManagerSync::Project(const PROJECTWORKTYPES& type) {
    return BoardOperation(
        DeviceLost::Refuses, [&](Remembered& r) { r.projectType = ToBoard(type); },
        [&](void* h) { return board::zr3DProject(h, ToBoard(type)); });
}

RETSTATUS IManagerSync::SetStrobeDutioRatio(const int& texture, const int& ratio,
                                            const int& withTexture) {
    std::array<int, 3> merged{};
    return BoardOperation(
        DeviceLost::Refuses,
        [&](Remembered& r) {
            KORVEX_LOG(kLog) << "SetStrobeDutioRatio TexDutioRatio=" << texture
                             << " dutioRatio=" << ratio << " dutioRatioWithTex= " << withTexture;
            const std::array<int, 3> asked{texture, ratio, withTexture};
            for (std::size_t i = 0; i < asked.size(); ++i) {
                if (asked[i] != kKeepRatio) {
                    r.strobeDuty[i] = asked[i];
                }
            }
            merged = r.strobeDuty;
        },
        [&](void* h) {
            return board::zr3DSetLedDutioRatio(h, kStrobeDutySet, merged[0], merged[1], merged[2]);
        });
}

RETSTATUS IManagerSync::GetStrobeDutioRatio(int& texture, int& ratio, int& withTexture) {
    return BoardQuery([&](void* h) {
        return board::zr3DQueryLedDutioRatio(h, kStrobeDutyQuery, texture, ratio, withTexture);
    });
}

RETSTATUS IManagerSync::SetLaserLineDutioRatio(const int& ratio) {
    return BoardOperation(
        DeviceLost::Refuses, [&](Remembered& r) { r.laserLineDuty = ratio; },
        [&](void* h) { return board::zr3DSetDutioRatio(h, kLaserLineDutySet, ratio); });
}

RETSTATUS IManagerSync::GetLaserLineDutioRatio(int& ratio) {
    return BoardQuery(
        [&](void* h) { return board::zr3DQueryDutioRatio(h, kLaserLineDutyQuery, ratio); });
}

RETSTATUS IManagerSync::SetProjectDutioRatio(const int& ratio) {
    return BoardOperation(
        DeviceLost::Refuses, [&](Remembered& r) { r.projectorDuty = ratio; },
        [&](void* h) { return board::zr3DSetDutioRatio(h, kProjectorDutySet, ratio); });
}

RETSTATUS IManagerSync::GetProjectDutioRatio(int& ratio) {
    return BoardQuery(
        [&](void* h) { return board::zr3DQueryDutioRatio(h, kProjectorDutyQuery, ratio); });
}

RETSTATUS IManagerSync::SetIRLaserDutioRatio(const int& ratio) {
    return BoardOperation(
        DeviceLost::Refuses, [&](Remembered& r) { r.irLaserDuty = ratio; },
        [&](void* h) { return board::zr3DSetDutioRatio(h, kIRLaserDutySet, ratio); });
}

RETSTATUS IManagerSync::GetIRLaserDutioRatio(int& ratio) {
    return BoardQuery(
        [&](void* h) { return board::zr3DQueryDutioRatio(h, kIRLaserDutyQuery, ratio); });
}

RETSTATUS IManagerSync::SetDistanceIndicate(const DISTANCESTATUS& state) {
    return BoardOperation(
        DeviceLost::Refuses, [&](Remembered& r) { r.distanceState = ToBoard(state); },
        [&](void* h) { return board::zr3DSetDistanceIndicateState(h, ToBoard(state)); });
}

RETSTATUS IManagerSync::WriteUserInfomation(const int& address, const char* data,
                                            const int& length) {
    return BoardQuery(
        [&](void* h) { return board::zr3DWriteUserInfomation(h, address, data, length); });
}

RETSTATUS IManagerSync::ReadUserInfomation(const int& address, char*& buffer) {
    return BoardQuery([&](void* h) { return board::zr3DReadUserInfomation(h, address, buffer); });
}

RETSTATUS IManagerSync::SetStrobeWorkTime(const int& withTexture, const int& without) {
    return BoardOperation(
        DeviceLost::Ignored,
        [&](Remembered& r) {
            r.strobeWorkTime = {withTexture, without};
        },
        [&](void* h) {
            return board::zr3DSetLedWorkTime(h, true, withTexture) &&
                   board::zr3DSetLedWorkTime(h, false, without);
        });
}

RETSTATUS IManagerSync::GetStrobeWorkTime(int& withTexture, int& without) {
    return BoardQuery([&](void* h) {
        const bool first = board::zr3DQueryLedWorkTime(h, true, withTexture);
        const bool second = board::zr3DQueryLedWorkTime(h, false, without);
        return first && second;
    });
}

RETSTATUS IManagerSync::SetLaserLineWorkTime(const int& time) {
    // Remembered as the infrared laser's: intended, and a reconnection counts on it.
    return BoardOperation(
        DeviceLost::Ignored, [&](Remembered& r) { r.irLaserWorkTime = time; },
        [&](void* h) { return board::zr3DSetWorkTime(h, kLaserLineWorkTimeSet, time); });
}

RETSTATUS IManagerSync::GetLaserLineWorkTime(int& time) {
    return BoardQuery(
        [&](void* h) { return board::zr3DQueryWorkTime(h, kLaserLineWorkTimeQuery, time); });
}

RETSTATUS IManagerSync::SetProjectWorkTime(const int& time) {
    return BoardOperation(
        DeviceLost::Ignored, [&](Remembered& r) { r.projectorWorkTime = time; },
        [&](void* h) { return board::zr3DSetWorkTime(h, kProjectorWorkTimeSet, time); });
}

RETSTATUS IManagerSync::GetProjectWorkTime(int& time) {
    return BoardQuery(
        [&](void* h) { return board::zr3DQueryWorkTime(h, kProjectorWorkTimeQuery, time); });
}

RETSTATUS IManagerSync::SetIRLaserWorkTime(const int& time) {
    return BoardOperation(
        DeviceLost::Ignored, [&](Remembered& r) { r.irLaserWorkTime = time; },
        [&](void* h) { return board::zr3DSetWorkTime(h, kIRLaserWorkTimeSet, time); });
}

RETSTATUS IManagerSync::GetIRLaserWorkTime(int& time) {
    return BoardQuery(
        [&](void* h) { return board::zr3DQueryWorkTime(h, kIRLaserWorkTimeQuery, time); });
}

}  // namespace Korvex3Sync
