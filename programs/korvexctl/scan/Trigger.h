#pragma once

#include <Korvex3Sync/Types.h>

namespace Korvex3Sync::korvexctl {

class LeftOn;
class Session;

/// The running trigger of a session: from construction image sets go to the scan callback; after
/// destruction the trigger is off and no set arrives. A refusal to switch it off is noted in
/// `leftOn`. Session, context and `leftOn` must live longer.
class Trigger {
public:
    /// Throws CommandError(DeviceRefused); then the trigger is off.
    Trigger(const Session& session, CAMERA_TRIGGER_MODE mode, ScanCallBackFunction callback,
            void* context, LeftOn& leftOn);
    ~Trigger();
    Trigger(const Trigger&) = delete;
    Trigger& operator=(const Trigger&) = delete;

    /// Switches the trigger off before the destructor does: sets on the way still arrive.
    void Off() const;

private:
    void End() const;

    const Session& m_session;
    const CAMERA_TRIGGER_MODE m_mode;
    LeftOn& m_leftOn;
};

}  // namespace Korvex3Sync::korvexctl
