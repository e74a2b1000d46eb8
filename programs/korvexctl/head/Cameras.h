#pragma once

#include <Korvex3Sync/Types.h>

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

namespace Korvex3Sync::korvexctl {

class Output;

/// One camera as discovery lists it; a camera that two sensors share is listed twice.
struct Camera {
    std::string serial;
    int width = 0;   // pixels
    int height = 0;  // pixels
    bool color = false;
};

/// The attached cameras of a type, in the order of discovery; may be empty. Throws CommandError
/// when discovery itself fails.
std::vector<Camera> FindCameras(const std::string& type);

/// Whether the sets of these cameras have a colour image in this mode.
bool GivesColor(const std::vector<Camera>& cameras, CAMERA_TRIGGER_MODE mode);

/// The error of a command that needs a camera and finds none.
std::string NoCameraMessage(const std::string& type);

/// [{"serial", "width", "height", "color"}, ...]
nlohmann::json ToJson(const std::vector<Camera>& cameras);
/// One line each.
void Print(const std::vector<Camera>& cameras, Output& output);

}  // namespace Korvex3Sync::korvexctl
