#pragma once

#include <Korvex3Sync/Types.h>

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "korvexctl/settings/SettingsAccess.h"

namespace Korvex3Sync::korvexctl {

class Output;

/// What a scan switches on, and off again at its end.
struct ScanLight {
    CAMERA_TRIGGER_MODE mode = TRIGGER_LASER_LINES_COLOR;
    int laserMode = 1;                // of the laser lines, in their modes
    int pattern = PROJECT_PATTERN_1;  // of the projector, in its modes
    bool infrared = false;
};

/// What a scan does to a head before it begins.
struct ScanSettings {
    ScanLight light;
    std::vector<Assignment> values;  // sent; everything else stays as it is on the head
};

/// The settings of a profile, overlaid by those of the command line. The trigger mode, the laser
/// lines, the projection and the infrared laser among them only say what the scan switches on; a
/// trigger mode that gives no sets says nothing.
ScanSettings CombineSettings(std::span<const Assignment> profile,
                             std::span<const Assignment> commandLine);

/// Whether the light of this mode is the projector's pattern; else it is the laser lines.
bool ShowsPattern(CAMERA_TRIGGER_MODE mode);

/// The word for a trigger mode that the command line takes ("laser-color").
std::string ModeName(CAMERA_TRIGGER_MODE mode);

/// The settings of a head while a scan runs, as read from it.
struct SettingsInUse {
    ScanSettings asked;
    std::vector<Reading> readings;  // of all settings that can be read

    /// Milliseconds from trigger to trigger; empty when the head does not report it.
    std::optional<int> PeriodMs() const;
    /// Those that matter in this light: "exposure.0 5 ms", ...
    std::vector<std::string> Texts() const;
};

/// Sends the values, reads all settings, and checks the values among them. Throws
/// CommandError(DeviceRefused) when the head refuses one or takes another.
SettingsInUse ApplyAndRead(void* const& handle, std::size_t cameras, ScanSettings asked);

/// "mode", "laser_mode", "pattern", "infrared", "given" (what was sent) and "values" (all that can
/// be read, null where that failed).
nlohmann::json ToJson(const SettingsInUse& settings);
/// What the scan uses, in a few lines.
void Print(const SettingsInUse& settings, Output& output);

}  // namespace Korvex3Sync::korvexctl
