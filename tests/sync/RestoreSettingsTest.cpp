#include "sync/board/RestoreSettings.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "recorder/Recorder.h"

namespace Korvex3Sync::tests {
namespace {

using recorder::Recorder;
using Calls = std::vector<std::string>;

class RestoreSettings : public testing::Test {
protected:
    RestoreSettings() {
        Recorder::Get().Reset();
        m_board = Recorder::Get().NewHandle("B");
    }
    void Restore(const RememberedSettings& settings) {
        RestoreBoard(m_board, settings, [this](void* board, auto mode) {
            m_triggerModes.push_back(mode);
            return zr3DHandiDLPdev::zr3DSetVideoTrigleMode(board, mode);
        });
    }

    void* m_board = nullptr;
    std::vector<int> m_triggerModes;
};

TEST_F(RestoreSettings, WritesEverythingInItsOrder) {
    RememberedSettings settings;
    settings.strobeRoute = zr3DHandiDLPdev::TRIGGERROUTE{1};
    settings.strobeState = zr3DHandiDLPdev::MASK_STROBE_STATE{3};
    settings.blueLaserEnable = true;
    settings.blueLaserMode = zr3DHandiDLPdev::LASERWORKMODE{2};
    settings.irLaserEnable = true;
    settings.triggerPeriod = 21;
    settings.projectorBrightness = 22;
    settings.triggerMode = zr3DHandiDLPdev::MASK_TRIGGER_MODE{6};
    settings.projectType = zr3DHandiDLPdev::PROJECTTYPE{2};
    settings.strobeDuty = {31, 32, 33};
    settings.laserLineDuty = 34;
    settings.projectorDuty = 35;
    settings.irLaserDuty = 36;
    settings.distanceState = zr3DHandiDLPdev::DISTANCEINDICATE{3};
    settings.irLaserLevel = 7;
    settings.strobeWorkTime = {501, 502};
    settings.projectorWorkTime = 503;
    settings.laserLineWorkTime = 504;
    settings.irLaserWorkTime = 505;
    Restore(settings);
    EXPECT_EQ(
        Recorder::Get().Calls(),
        (Calls{"zr3DOpenOrCloseStrobeFlicker(B1, 1, 3)", "zr3DSetDistanceIndicateState(B1, 3)",
               "zr3DProject(B1, 2)", "zr3DSetProjectorBrightness(B1, 22)",
               "zr3DSetWorkTime(B1, 84, 503)", "zr3DSetIRLaserLevel(B1, 7)",
               "zr3DSetLaserEnable(B1, 1, 2)", "zr3DSetDutioRatio(B1, 49, 34)",
               "zr3DSetWorkTime(B1, 82, 504)", "zr3DSetIRLaserEnable(B1, 1)",
               "zr3DSetWorkTime(B1, 86, 505)", "zr3DSetDutioRatio(B1, 53, 36)",
               "zr3DSetVideoTrigleMode(B1, 6)", "zr3DSetVideoTriggerPeriod(B1, 21)",
               "zr3DSetDutioRatio(B1, 51, 35)", "zr3DSetLedDutioRatio(B1, 41, 31, 32, 33)",
               "zr3DSetLedWorkTime(B1, 1, 501)", "zr3DSetLedWorkTime(B1, 0, 502)"}));
}

TEST_F(RestoreSettings, WhatTheBoardRefusesDoesNotStopTheRest) {
    Restore({});
    const Calls all = Recorder::Get().Calls();
    ASSERT_EQ(all.size(), 18u);
    for (const std::string& call : all) {
        Recorder::Get().FailAlways(call.substr(0, call.find('(')));
    }
    Restore({});
    EXPECT_EQ(Recorder::Get().Calls().size(), 36u);
}

}  // namespace
}  // namespace Korvex3Sync::tests
