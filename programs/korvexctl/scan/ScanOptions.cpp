#include "korvexctl/scan/ScanOptions.h"

#include <nlohmann/json.hpp>

#include "korvexctl/head/TriggerModes.h"

namespace Korvex3Sync::korvexctl {

std::string ModeName(CAMERA_TRIGGER_MODE mode) {
    for (const TriggerMode& known : kTriggerModes) {
        if (known.mode == mode) {
            return known.name;
        }
    }
    return std::to_string(static_cast<int>(mode));
}

nlohmann::json ToJson(const LightOptions& light) {
    return {{"mode", ModeName(light.mode)},
            {"period_ms", light.periodMs},
            {"laser_mode", light.laserMode},
            {"laser_duty_percent", light.laserDutyPercent},
            {"brightness_percent", light.brightnessPercent},
            {"projector_duty_percent", light.projectorDutyPercent},
            {"strobe_duty_percent", light.strobeDutyPercent},
            {"ir_level", light.irLevel}};
}

}  // namespace Korvex3Sync::korvexctl
