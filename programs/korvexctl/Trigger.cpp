#include "korvexctl/Trigger.h"

#include <Korvex3Sync/Images.h>
#include <Korvex3Sync/Light.h>

#include "korvexctl/ExitCodes.h"
#include "korvexctl/Session.h"

namespace Korvex3Sync::korvexctl {

Trigger::Trigger(const Session& session, CAMERA_TRIGGER_MODE mode, ScanCallBackFunction callback,
                 void* context)
    : m_session(session), m_mode(mode) {
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

// Also for a board that no longer answers: then there is nothing left to switch off.
void Trigger::Off() const {
    EnableVideoTrigger(m_session.Handle(), m_mode, false);
}

void Trigger::End() const {
    Off();
    SetScanCallBackFunction(m_session.Handle(), nullptr, nullptr);
}

}  // namespace Korvex3Sync::korvexctl
