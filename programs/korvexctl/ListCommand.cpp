#include <nlohmann/json.hpp>

#include "korvexctl/Cameras.h"
#include "korvexctl/Commands.h"

namespace Korvex3Sync::korvexctl {

Outcome RunList(const HeadChoice& choice, Output& output) {
    const std::vector<Camera> cameras = FindCameras(choice.cameraType);
    Outcome outcome;
    outcome.figures["cameras"] = ToJson(cameras);
    if (cameras.empty()) {
        outcome.code = ExitCode::NoCamera;
        outcome.message = NoCameraMessage(choice.cameraType);
    }
    Print(cameras, output);
    return outcome;
}

}  // namespace Korvex3Sync::korvexctl
