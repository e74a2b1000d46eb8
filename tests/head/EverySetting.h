#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Korvex3Sync/Korvex3Sync.h"
#include "virtual_head/VirtualHead.h"

namespace Korvex3Sync::tests {

/// The settings of a board that change in a test after SetEverySetting.
struct ChangedSettings {
    std::string strobe = "0, 3";  // route, state
    int brightness = 77;
    int triggerMode = 6;
};

/// Sets every setting of the board, and those of sensor 1, to a value that is not the initial one.
inline void SetEverySetting(void* handle) {
    EXPECT_EQ(SetLaserLineDutioRatio(handle, 61), STATUS_SUCCESS);
    EXPECT_EQ(SetProjectDutioRatio(handle, 62), STATUS_SUCCESS);
    EXPECT_EQ(SetIRLaserDutioRatio(handle, 63), STATUS_SUCCESS);
    EXPECT_EQ(SetStrobeDutioRatio(handle, -1, 30, -1), STATUS_SUCCESS);
    EXPECT_EQ(SetStrobeWorkTime(handle, 301, 302), STATUS_SUCCESS);
    EXPECT_EQ(SetLaserLineWorkTime(handle, 303), STATUS_SUCCESS);
    EXPECT_EQ(SetProjectWorkTime(handle, 304), STATUS_SUCCESS);
    EXPECT_EQ(SetProjectorBrightness(handle, ChangedSettings{}.brightness), STATUS_SUCCESS);
    EXPECT_EQ(SetVideoTriggerPeriod(handle, 2), STATUS_SUCCESS);
    EXPECT_EQ(SetDistanceIndicate(handle, DISTANCE_STATUS_2), STATUS_SUCCESS);
    EXPECT_EQ(EnableBlueLaser(handle, LASER_WORK_MODE_2, true), STATUS_SUCCESS);
    EXPECT_EQ(EnableIRLaser(handle, true), STATUS_SUCCESS);
    EXPECT_EQ(SetIRLaserBrightnessLevel(handle, 6), STATUS_SUCCESS);
    EXPECT_EQ(Project(handle, PROJECT_PATTERN_2), STATUS_SUCCESS);
    EXPECT_EQ(SetStrobeControlledByTrigger(handle, CONTROL_ROUTE_0, STROBE_STATE_3),
              STATUS_SUCCESS);
    EXPECT_EQ(SetCameraExposureAndGain(handle, 1, 8.5, 3), STATUS_SUCCESS);
    EXPECT_EQ(EnableVideoTrigger(handle, TRIGGER_LASER_LINES_COLOR, true), STATUS_SUCCESS);
}

/// What a reconnection then writes to the board, in order; at the end it switches the heartbeat on.
inline std::vector<std::string> EverySettingWritten(const ChangedSettings& changed = {}) {
    return {"zr3DOpenOrCloseStrobeFlicker(" + changed.strobe + ") = true",
            "zr3DSetDistanceIndicateState(3) = true",
            "zr3DProject(2) = true",
            "zr3DSetProjectorBrightness(" + std::to_string(changed.brightness) + ") = true",
            "zr3DSetWorkTime(84, 304) = true",
            "zr3DSetIRLaserLevel(6) = true",
            "zr3DSetLaserEnable(1, 2) = true",
            "zr3DSetDutioRatio(49, 61) = true",
            "zr3DSetWorkTime(82, 1000) = true",
            "zr3DSetIRLaserEnable(1) = true",
            "zr3DSetWorkTime(86, 303) = true",
            "zr3DSetDutioRatio(53, 63) = true",
            "zr3DSetVideoTrigleMode(" + std::to_string(changed.triggerMode) + ") = true",
            "zr3DSetVideoTriggerPeriod(2) = true",
            "zr3DSetDutioRatio(51, 62) = true",
            "zr3DSetLedDutioRatio(41, 100, 30, 100) = true",
            "zr3DSetLedWorkTime(1, 301) = true",
            "zr3DSetLedWorkTime(0, 302) = true",
            "zr3DEnableHeartbeat(1) = true"};
}

/// What was written to the board since it was last opened, in order.
inline std::vector<std::string> WrittenSinceOpening(virtual_head::VirtualHead& head) {
    std::vector<std::string> written;
    for (const std::string& text : head.GetJournal().Texts(
             {"zr3DInitHidDev", "zr3DOpenOrCloseStrobeFlicker", "zr3DSetDistanceIndicateState",
              "zr3DProject", "zr3DSetProjectorBrightness", "zr3DSetWorkTime", "zr3DSetIRLaserLevel",
              "zr3DSetLaserEnable", "zr3DSetDutioRatio", "zr3DSetIRLaserEnable",
              "zr3DSetVideoTrigleMode", "zr3DSetVideoTriggerPeriod", "zr3DSetLedDutioRatio",
              "zr3DSetLedWorkTime", "zr3DEnableHeartbeat"})) {
        if (text.starts_with("zr3DInitHidDev")) {
            written.clear();
        } else {
            written.push_back(text);
        }
    }
    return written;
}

}  // namespace Korvex3Sync::tests
