#pragma once

#include "korvexctl/ScanOptions.h"

namespace Korvex3Sync::korvexctl {

class Session;

/// The light of a scan: set by the constructor, lasers and projection switched off by the
/// destructor. The session must live longer.
class Illumination {
public:
    /// Throws CommandError(DeviceRefused) with the operation that the board refused.
    Illumination(const Session& session, const LightOptions& light);
    ~Illumination();
    Illumination(const Illumination&) = delete;
    Illumination& operator=(const Illumination&) = delete;

private:
    void SwitchOn() const;
    void SwitchOff() const;

    const Session& m_session;
    const LightOptions m_light;
};

}  // namespace Korvex3Sync::korvexctl
