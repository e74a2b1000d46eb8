#include "korvexctl/scan/Illumination.h"

#include <Korvex3Sync/Light.h>

#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/head/LeftOn.h"
#include "korvexctl/head/Session.h"

namespace Korvex3Sync::korvexctl {

Illumination::Illumination(const Session& session, const ScanLight& light, LeftOn& leftOn)
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
    if (ShowsPattern(m_light.mode)) {
        Require(Project(head, static_cast<PROJECTWORKTYPES>(m_light.pattern)),
                "project the pattern");
    } else {
        Require(EnableBlueLaser(head, static_cast<LASERWORKMODE>(m_light.laserMode), true),
                "switch the laser lines on");
    }
    if (m_light.infrared) {
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
    note("infrared laser", EnableIRLaser(head, false), m_light.infrared);
    note("projector", Project(head, PROJECT_OFF), pattern);
}

}  // namespace Korvex3Sync::korvexctl
