#pragma once

#include <Korvex3Sync/Types.h>

#include <filesystem>
#include <nlohmann/json_fwd.hpp>
#include <string>

namespace Korvex3Sync::korvexctl {

/// What the head is set to before a scan.
struct LightOptions {
    CAMERA_TRIGGER_MODE mode = TRIGGER_LASER_LINES_COLOR;
    int periodMs = 10;
    int laserMode = 1;
    int laserDutyPercent = 100;
    int brightnessPercent = 60;
    int projectorDutyPercent = 100;
    int strobeDutyPercent = 100;
    int irLevel = 0;  // 0: the infrared laser stays off
};

struct ScanOptions {
    int sets = 100;
    int keep = 5;
    int buffers = 32;  // sets that may wait to be written
    double timeoutSeconds = 5;
    std::filesystem::path folder;  // empty: nothing is written
    LightOptions light;
};

/// The word for a trigger mode that the command line takes ("laser-color").
std::string ModeName(CAMERA_TRIGGER_MODE mode);

/// The settings with their units, as scan.json shows them.
nlohmann::json ToJson(const LightOptions& light);

}  // namespace Korvex3Sync::korvexctl
