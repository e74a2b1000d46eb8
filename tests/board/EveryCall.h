#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "platform/include/zr3DHandiDLPdev.h"

namespace Korvex3Sync::tests {

/// A valid call of each function that takes an open board, and its journal text without the result.
struct BoardCall {
    const char* function;
    const char* arguments;
    std::function<bool(void* handle)> call;

    std::string Journal(bool result) const {
        return std::string(function) + "(" + arguments + ") = " + (result ? "true" : "false");
    }
};

inline const std::vector<BoardCall>& EveryCall() {
    using namespace zr3DHandiDLPdev;
    static std::string text;
    static int number = 0;
    static unsigned char byte = 0;
    static std::array<char, 256> page;
    static const std::vector<BoardCall> calls{
        {"zr3DQueryProjectorFirewareVersion", "",
         [](void* h) { return zr3DQueryProjectorFirewareVersion(h, text); }},
        {"zr3DResetDevice", "", zr3DResetDevice},
        {"zr3DResetFPGA", "", zr3DResetFPGA},
        {"zr3DQueryCurrentStatus", "",
         [](void* h) { return zr3DQueryCurrentStatus(h, byte, byte); }},
        {"zr3DEnableHeartbeat", "1", [](void* h) { return zr3DEnableHeartbeat(h, true); }},
        {"zr3DOpenOrCloseStrobeFlicker", "1, 3",
         [](void* h) {
             return zr3DOpenOrCloseStrobeFlicker(h, TRIGGERROUTE{1}, MASK_STROBE_STATE{3});
         }},
        {"zr3DSetLaserEnable", "1, 2",
         [](void* h) { return zr3DSetLaserEnable(h, true, LASERWORKMODE{2}); }},
        {"zr3DSetIRLaserEnable", "0", [](void* h) { return zr3DSetIRLaserEnable(h, false); }},
        {"zr3DSetIRLaserLevel", "4", [](void* h) { return zr3DSetIRLaserLevel(h, 4); }},
        {"zr3DSetVideoTriggerPeriod", "20",
         [](void* h) { return zr3DSetVideoTriggerPeriod(h, 20); }},
        {"zr3DQueryTriggerPeriod", "", [](void* h) { return zr3DQueryTriggerPeriod(h, number); }},
        {"zr3DSetProjectorBrightness", "55",
         [](void* h) { return zr3DSetProjectorBrightness(h, 55); }},
        {"zr3DQueryProjectorBrightness", "",
         [](void* h) { return zr3DQueryProjectorBrightness(h, number); }},
        {"zr3DSetVideoTrigleMode", "5",
         [](void* h) { return zr3DSetVideoTrigleMode(h, MASK_TRIGGER_MODE{5}); }},
        {"zr3DProject", "2", [](void* h) { return zr3DProject(h, PROJECTTYPE{2}); }},
        {"zr3DSetLedDutioRatio", "41, 100, 30, 90",
         [](void* h) { return zr3DSetLedDutioRatio(h, 41, 100, 30, 90); }},
        {"zr3DQueryLedDutioRatio", "48",
         [](void* h) { return zr3DQueryLedDutioRatio(h, 48, number, number, number); }},
        {"zr3DSetDutioRatio", "49, 60", [](void* h) { return zr3DSetDutioRatio(h, 49, 60); }},
        {"zr3DQueryDutioRatio", "50", [](void* h) { return zr3DQueryDutioRatio(h, 50, number); }},
        {"zr3DSetLedWorkTime", "1, 700", [](void* h) { return zr3DSetLedWorkTime(h, true, 700); }},
        {"zr3DQueryLedWorkTime", "0",
         [](void* h) { return zr3DQueryLedWorkTime(h, false, number); }},
        {"zr3DSetWorkTime", "82, 500", [](void* h) { return zr3DSetWorkTime(h, 82, 500); }},
        {"zr3DQueryWorkTime", "83", [](void* h) { return zr3DQueryWorkTime(h, 83, number); }},
        {"zr3DSetDistanceIndicateState", "3",
         [](void* h) { return zr3DSetDistanceIndicateState(h, DISTANCEINDICATE{3}); }},
        {"zr3DWriteUserInfomation", "2, 3",
         [](void* h) { return zr3DWriteUserInfomation(h, 2, "abc", 3); }},
        {"zr3DReadUserInfomation", "2",
         [](void* h) {
             char* buffer = page.data();
             return zr3DReadUserInfomation(h, 2, buffer);
         }},
    };
    return calls;
}

}  // namespace Korvex3Sync::tests
