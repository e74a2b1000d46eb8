#pragma once

#include "korvexctl/scan/ScanSettings.h"

namespace Korvex3Sync::korvexctl {

class LeftOn;
class Session;

/// The light of a scan: switched on by the constructor, lasers and projection switched off by the
/// destructor, which notes in `leftOn` what the board refused of it. Both must live longer. How
/// bright it is, and what the strobe does, stays as it is on the head.
class Illumination {
public:
    /// Throws CommandError(DeviceRefused) with the operation that the board refused.
    Illumination(const Session& session, const ScanLight& light, LeftOn& leftOn);
    ~Illumination();
    Illumination(const Illumination&) = delete;
    Illumination& operator=(const Illumination&) = delete;

private:
    void SwitchOn() const;
    void SwitchOff() const;

    const Session& m_session;
    const ScanLight m_light;
    LeftOn& m_leftOn;
};

}  // namespace Korvex3Sync::korvexctl
