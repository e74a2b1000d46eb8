#include "korvexctl/scan/Illumination.h"

#include <Korvex3Sync/Light.h>

#include <algorithm>

#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/head/LeftOn.h"
#include "korvexctl/head/Session.h"
#include "korvexctl/head/TriggerModes.h"

namespace Korvex3Sync::korvexctl {

namespace {

bool ShowsPattern(CAMERA_TRIGGER_MODE mode) {
    return std::any_of(kTriggerModes.begin(), kTriggerModes.end(),
                       [mode](const TriggerMode& m) { return m.mode == mode && m.pattern; });
}

}  // namespace

Illumination::Illumination(const Session& session, const LightOptions& light, LeftOn& leftOn)
    : m_session(session), m_light(light), m_leftOn(leftOn) {
    try {
        SwitchOn();
    } catch (const CommandError&) {
        SwitchOff();
        throw;
    }
}

Illumination::~Illumination() {
    SwitchOff();
}

void Illumination::SwitchOn() const {
    void* const& head = m_session.Handle();
    Require(SetVideoTriggerPeriod(head, m_light.periodMs), "set the trigger period");
    Require(SetStrobeControlledByTrigger(head, CONTROL_ROUTE_2, STROBE_STATE_1),
            "couple the strobe to the trigger");
    const int strobe = m_light.strobeDutyPercent;
    Require(SetStrobeDutioRatio(head, strobe, strobe, strobe), "set the strobe duty ratio");
    if (ShowsPattern(m_light.mode)) {
        Require(SetProjectorBrightness(head, m_light.brightnessPercent),
                "set the projector brightness");
        Require(SetProjectDutioRatio(head, m_light.projectorDutyPercent),
                "set the projector duty ratio");
        Require(Project(head, PROJECT_PATTERN_1), "project the pattern");
    } else {
        Require(SetLaserLineDutioRatio(head, m_light.laserDutyPercent),
                "set the laser line duty ratio");
        Require(EnableBlueLaser(head, static_cast<LASERWORKMODE>(m_light.laserMode), true),
                "switch the laser lines on");
    }
    if (m_light.irLevel > 0) {
        Require(SetIRLaserBrightnessLevel(head, m_light.irLevel), "set the infrared laser level");
        Require(EnableIRLaser(head, true), "switch the infrared laser on");
    }
}

// Everything is switched off, also what an earlier program left on. A refusal counts only for what
// this scan switched on.
void Illumination::SwitchOff() const {
    void* const& head = m_session.Handle();
    const bool pattern = ShowsPattern(m_light.mode);
    const auto note = [this](const char* what, RETSTATUS status, bool switchedOn) {
        if (switchedOn || status == STATUS_SUCCESS) {
            m_leftOn.Note(what, status);
        }
    };
    note("laser lines", EnableBlueLaser(head, static_cast<LASERWORKMODE>(m_light.laserMode), false),
         !pattern);
    note("infrared laser", EnableIRLaser(head, false), m_light.irLevel > 0);
    note("projector", Project(head, PROJECT_OFF), pattern);
}

}  // namespace Korvex3Sync::korvexctl
