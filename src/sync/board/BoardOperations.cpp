#include "platform/include/zr3DHandiDLPdev.h"
#include "platform/os/Log.h"
#include "sync/board/BoardSelectors.h"
#include "sync/board/BoardSession.h"
#include "sync/board/BoardTranslation.h"
#include "sync/connection/ManagerLog.h"
#include "sync/connection/ScanCallbackRule.h"

namespace Korvex3Sync {

namespace board = zr3DHandiDLPdev;

namespace {

/// A strobe duty ratio that keeps the value that was last requested.
constexpr int kKeepRatio = -1;

using Remembered = RememberedSettings;

}  // namespace

template <class Remember, class Call>
RETSTATUS BoardSession::BoardOperation(DeviceLost lost, Remember remember, Call call,
                                       Parameters parameters) {
    // A reconnection holds this lock while the board is closed, so an operation waits for it.
    const DeviceGuard device(m_csDevice);
    void* const handle = m_hDevice;
    if (handle == nullptr) {
        return STATUS_NOT_CONNECTED;
    }
    if (parameters == Parameters::Bad) {
        return STATUS_PARAMETER;
    }
    remember(m_remembered);
    if (lost == DeviceLost::Refuses && m_bDeviceLost) {
        return STATUS_FAILED;
    }
    return call(handle) ? STATUS_SUCCESS : STATUS_FAILED;
}

template <class Call>
RETSTATUS BoardSession::BoardQuery(Call call) {
    return BoardOperation(
        DeviceLost::Refuses, [](Remembered&) {}, call);
}

RETSTATUS BoardSession::GetFirewareVersion(const char* pcbSerial, std::string& version) {
    const DeviceGuard device(m_csDevice);  // no reconnection may close the board in between
    const RETSTATUS open = EnsureBoardOpen(pcbSerial);
    if (open != STATUS_SUCCESS) {
        return open;
    }
    return BoardOperation(
        DeviceLost::Ignored, [](Remembered&) {},
        [&](void* h) { return board::zr3DQueryProjectorFirewareVersion(h, version); });
}

RETSTATUS BoardSession::SetStrobeControlledByTrigger(const CONTROLROUTE& route,
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

RETSTATUS BoardSession::EnableBlueLaser(const LASERWORKMODE& mode, const bool& enable) {
    return BoardOperation(
        DeviceLost::Refuses,
        [&](Remembered& r) {
            r.blueLaserEnable = enable;
            r.blueLaserMode = ToBoard(mode);
        },
        [&](void* h) { return board::zr3DSetLaserEnable(h, enable, ToBoard(mode)); });
}

RETSTATUS BoardSession::EnableIRLaser(const bool& enable) {
    return BoardOperation(
        DeviceLost::Refuses, [&](Remembered& r) { r.irLaserEnable = enable; },
        [&](void* h) { return board::zr3DSetIRLaserEnable(h, enable); });
}

RETSTATUS BoardSession::SetIRLaserBrightnessLevel(const int& level) {
    return BoardOperation(
        DeviceLost::Ignored, [&](Remembered& r) { r.irLaserLevel = level; },
        [&](void* h) { return board::zr3DSetIRLaserLevel(h, level); });
}

RETSTATUS BoardSession::SetVideoTriggerPeriod(const int& period) {
    return BoardOperation(
        DeviceLost::Refuses, [&](Remembered& r) { r.triggerPeriod = period; },
        [&](void* h) { return board::zr3DSetVideoTriggerPeriod(h, period); });
}

RETSTATUS BoardSession::GetVideoTriggerPeriod(int& period) {
    return BoardQuery([&](void* h) { return board::zr3DQueryTriggerPeriod(h, period); });
}

RETSTATUS BoardSession::SetProjectorBrightness(const int& brightness) {
    return BoardOperation(
        DeviceLost::Refuses, [&](Remembered& r) { r.projectorBrightness = brightness; },
        [&](void* h) { return board::zr3DSetProjectorBrightness(h, brightness); });
}

RETSTATUS BoardSession::GetProjectorBrightness(int& brightness) {
    return BoardQuery([&](void* h) { return board::zr3DQueryProjectorBrightness(h, brightness); });
}

RETSTATUS BoardSession::EnableVideoTrigger(const CAMERA_TRIGGER_MODE& mode, const bool& enable) {
    const board::MASK_TRIGGER_MODE boardMode = ToBoard(mode, enable);
    return BoardOperation(
        DeviceLost::Refuses, [&](Remembered& r) { r.triggerMode = boardMode; },
        [&](void* h) KORVEX_NO_THREAD_SAFETY_ANALYSIS { return WriteTriggerMode(h, boardMode); });
}

RETSTATUS BoardSession::Project(const PROJECTWORKTYPES& type) {
    return BoardOperation(
        DeviceLost::Refuses, [&](Remembered& r) { r.projectType = ToBoard(type); },
        [&](void* h) { return board::zr3DProject(h, ToBoard(type)); });
}

RETSTATUS BoardSession::SetStrobeDutioRatio(const int& texture, const int& ratio,
                                            const int& withTexture) {
    std::array<int, 3> merged{};
    return BoardOperation(
        DeviceLost::Refuses,
        [&](Remembered& r) {
            KORVEX_LOG(kManagerSyncLog)
                << "SetStrobeDutioRatio TexDutioRatio=" << texture << " dutioRatio=" << ratio
                << " dutioRatioWithTex= " << withTexture;
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

RETSTATUS BoardSession::GetStrobeDutioRatio(int& texture, int& ratio, int& withTexture) {
    return BoardQuery([&](void* h) {
        return board::zr3DQueryLedDutioRatio(h, kStrobeDutyQuery, texture, ratio, withTexture);
    });
}

RETSTATUS BoardSession::SetLaserLineDutioRatio(const int& ratio) {
    return BoardOperation(
        DeviceLost::Refuses, [&](Remembered& r) { r.laserLineDuty = ratio; },
        [&](void* h) { return board::zr3DSetDutioRatio(h, kLaserLineDutySet, ratio); });
}

RETSTATUS BoardSession::GetLaserLineDutioRatio(int& ratio) {
    return BoardQuery(
        [&](void* h) { return board::zr3DQueryDutioRatio(h, kLaserLineDutyQuery, ratio); });
}

RETSTATUS BoardSession::SetProjectDutioRatio(const int& ratio) {
    return BoardOperation(
        DeviceLost::Refuses, [&](Remembered& r) { r.projectorDuty = ratio; },
        [&](void* h) { return board::zr3DSetDutioRatio(h, kProjectorDutySet, ratio); });
}

RETSTATUS BoardSession::GetProjectDutioRatio(int& ratio) {
    return BoardQuery(
        [&](void* h) { return board::zr3DQueryDutioRatio(h, kProjectorDutyQuery, ratio); });
}

RETSTATUS BoardSession::SetIRLaserDutioRatio(const int& ratio) {
    return BoardOperation(
        DeviceLost::Refuses, [&](Remembered& r) { r.irLaserDuty = ratio; },
        [&](void* h) { return board::zr3DSetDutioRatio(h, kIRLaserDutySet, ratio); });
}

RETSTATUS BoardSession::GetIRLaserDutioRatio(int& ratio) {
    return BoardQuery(
        [&](void* h) { return board::zr3DQueryDutioRatio(h, kIRLaserDutyQuery, ratio); });
}

RETSTATUS BoardSession::SetDistanceIndicate(const DISTANCESTATUS& state) {
    return BoardOperation(
        DeviceLost::Refuses, [&](Remembered& r) { r.distanceState = ToBoard(state); },
        [&](void* h) { return board::zr3DSetDistanceIndicateState(h, ToBoard(state)); });
}

RETSTATUS BoardSession::WriteUserInfomation(const int& address, const char* data,
                                            const int& length) {
    return BoardQuery(
        [&](void* h) { return board::zr3DWriteUserInfomation(h, address, data, length); });
}

RETSTATUS BoardSession::ReadUserInfomation(const int& address, char*& buffer) {
    return BoardQuery([&](void* h) { return board::zr3DReadUserInfomation(h, address, buffer); });
}

RETSTATUS BoardSession::SetStrobeWorkTime(const int& withTexture, const int& without) {
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

RETSTATUS BoardSession::GetStrobeWorkTime(int& withTexture, int& without) {
    return BoardQuery([&](void* h) {
        const bool first = board::zr3DQueryLedWorkTime(h, true, withTexture);
        const bool second = board::zr3DQueryLedWorkTime(h, false, without);
        return first && second;
    });
}

RETSTATUS BoardSession::SetLaserLineWorkTime(const int& time) {
    // Remembered as the infrared laser's work time. This is intended; a reconnection relies on it.
    return BoardOperation(
        DeviceLost::Ignored, [&](Remembered& r) { r.irLaserWorkTime = time; },
        [&](void* h) { return board::zr3DSetWorkTime(h, kLaserLineWorkTimeSet, time); });
}

RETSTATUS BoardSession::GetLaserLineWorkTime(int& time) {
    return BoardQuery(
        [&](void* h) { return board::zr3DQueryWorkTime(h, kLaserLineWorkTimeQuery, time); });
}

RETSTATUS BoardSession::SetProjectWorkTime(const int& time) {
    return BoardOperation(
        DeviceLost::Ignored, [&](Remembered& r) { r.projectorWorkTime = time; },
        [&](void* h) { return board::zr3DSetWorkTime(h, kProjectorWorkTimeSet, time); });
}

RETSTATUS BoardSession::GetProjectWorkTime(int& time) {
    return BoardQuery(
        [&](void* h) { return board::zr3DQueryWorkTime(h, kProjectorWorkTimeQuery, time); });
}

RETSTATUS BoardSession::SetIRLaserWorkTime(const int& time) {
    return BoardOperation(
        DeviceLost::Ignored, [&](Remembered& r) { r.irLaserWorkTime = time; },
        [&](void* h) { return board::zr3DSetWorkTime(h, kIRLaserWorkTimeSet, time); });
}

RETSTATUS BoardSession::GetIRLaserWorkTime(int& time) {
    return BoardQuery(
        [&](void* h) { return board::zr3DQueryWorkTime(h, kIRLaserWorkTimeQuery, time); });
}

RETSTATUS BoardSession::EnableHeartbeat(bool enable) {
    return BoardOperation(
        DeviceLost::Ignored, [&](Remembered& r) { r.heartbeatEnabled = enable; },
        [&](void* h) { return board::zr3DEnableHeartbeat(h, enable); });
}

}  // namespace Korvex3Sync
