#include "sync/board/RestoreSettings.h"

#include "sync/board/BoardSelectors.h"

namespace Korvex3Sync {

void RestoreBoard(void* board, const RememberedSettings& settings, const TriggerWriter& trigger) {
    namespace lib = zr3DHandiDLPdev;
    const RememberedSettings& s = settings;
    lib::zr3DOpenOrCloseStrobeFlicker(board, s.strobeRoute, s.strobeState);
    lib::zr3DSetDistanceIndicateState(board, s.distanceState);
    lib::zr3DProject(board, s.projectType);
    lib::zr3DSetProjectorBrightness(board, s.projectorBrightness);
    lib::zr3DSetWorkTime(board, kProjectorWorkTimeSet, s.projectorWorkTime);
    lib::zr3DSetIRLaserLevel(board, s.irLaserLevel);
    lib::zr3DSetLaserEnable(board, s.blueLaserEnable, s.blueLaserMode);
    lib::zr3DSetDutioRatio(board, kLaserLineDutySet, s.laserLineDuty);
    // Always the initial value: the setter stores its value as the infrared laser's work time.
    lib::zr3DSetWorkTime(board, kLaserLineWorkTimeSet, s.laserLineWorkTime);
    lib::zr3DSetIRLaserEnable(board, s.irLaserEnable);
    lib::zr3DSetWorkTime(board, kIRLaserWorkTimeSet, s.irLaserWorkTime);
    lib::zr3DSetDutioRatio(board, kIRLaserDutySet, s.irLaserDuty);
    trigger(board, s.triggerMode);
    lib::zr3DSetVideoTriggerPeriod(board, s.triggerPeriod);
    lib::zr3DSetDutioRatio(board, kProjectorDutySet, s.projectorDuty);
    lib::zr3DSetLedDutioRatio(board, kStrobeDutySet, s.strobeDuty[0], s.strobeDuty[1],
                              s.strobeDuty[2]);
    lib::zr3DSetLedWorkTime(board, true, s.strobeWorkTime[0]);
    lib::zr3DSetLedWorkTime(board, false, s.strobeWorkTime[1]);
}

}  // namespace Korvex3Sync
