#include "korvexctl/scan/Trigger.h"

#include <Korvex3Sync/Images.h>
#include <Korvex3Sync/Light.h>

#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/head/LeftOn.h"
#include "korvexctl/head/Session.h"

namespace Korvex3Sync::korvexctl {

Trigger::Trigger(const Session& session, CAMERA_TRIGGER_MODE mode, ScanCallBackFunction callback,
                 void* context, LeftOn& leftOn)
    : m_session(session), m_mode(mode), m_leftOn(leftOn) {
    try {
        Require(SetScanCallBackFunction(session.Handle(), callback, context),
                "set the scan callback");
        Require(EnableVideoTrigger(session.Handle(), mode, true), "switch the trigger on");
    } catch (const CommandError&) {
        End();
        throw;
    }
}

Trigger::~Trigger() {
    End();
}

void Trigger::Off() const {
    m_leftOn.Note("trigger", EnableVideoTrigger(m_session.Handle(), m_mode, false));
}

void Trigger::End() const {
    Off();
    SetScanCallBackFunction(m_session.Handle(), nullptr, nullptr);
}

}  // namespace Korvex3Sync::korvexctl
