#include "korvexctl/head/Cameras.h"

#include <Korvex3Sync/Discovery.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/files/Output.h"
#include "korvexctl/head/Drivers.h"
#include "korvexctl/head/Session.h"
#include "korvexctl/head/TriggerModes.h"

namespace Korvex3Sync::korvexctl {

std::vector<Camera> FindCameras(const std::string& type) {
    std::vector<char*> serials;
    std::vector<int> widths;
    std::vector<int> heights;
    std::vector<bool> colors;
    int count = 0;
    const RETSTATUS status =
        GetCamerasInformation(type.c_str(), serials, widths, heights, colors, count);
    std::vector<Camera> cameras;
    for (std::size_t i = 0; i < serials.size(); ++i) {
        const std::unique_ptr<char[]> serial(serials[i]);
        cameras.push_back({serial.get(), widths[i], heights[i], colors[i]});
    }
    if (status != STATUS_SUCCESS) {
        throw CommandError(ExitCode::NoCamera, "cannot list the cameras: " + StatusText(status));
    }
    return cameras;
}

bool GivesColor(const std::vector<Camera>& cameras, CAMERA_TRIGGER_MODE mode) {
    return std::any_of(cameras.begin(), cameras.end(),
                       [](const Camera& camera) { return camera.color; }) &&
           std::any_of(kTriggerModes.begin(), kTriggerModes.end(),
                       [mode](const TriggerMode& m) { return m.mode == mode && m.color; });
}

std::string NoCameraMessage(const std::string& type) {
    return "no camera found (type " + type + ")" + WhyNoCamera("; the simulated head has none");
}

nlohmann::json ToJson(const std::vector<Camera>& cameras) {
    nlohmann::json list = nlohmann::json::array();
    for (const Camera& camera : cameras) {
        list.push_back({{"serial", camera.serial},
                        {"width", camera.width},
                        {"height", camera.height},
                        {"color", camera.color}});
    }
    return list;
}

void Print(const std::vector<Camera>& cameras, Output& output) {
    for (const Camera& camera : cameras) {
        output.Line("camera " + camera.serial + "  " + std::to_string(camera.width) + " x " +
                    std::to_string(camera.height) + (camera.color ? "  colour" : "  mono"));
    }
}

}  // namespace Korvex3Sync::korvexctl
