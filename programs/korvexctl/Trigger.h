#pragma once

#include <Korvex3Sync/Types.h>

namespace Korvex3Sync::korvexctl {

class ScanRecorder;
class Session;

/// The running trigger of a scan: image sets go to the recorder from construction on; once it is
/// destroyed the trigger is off and no more set comes. Session and recorder must live longer.
class Trigger {
public:
    /// Throws CommandError(DeviceRefused).
    Trigger(const Session& session, ScanRecorder& recorder, CAMERA_TRIGGER_MODE mode);
    ~Trigger();
    Trigger(const Trigger&) = delete;
    Trigger& operator=(const Trigger&) = delete;

private:
    void Off() const;

    const Session& m_session;
    const CAMERA_TRIGGER_MODE m_mode;
};

}  // namespace Korvex3Sync::korvexctl
