#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "platform/link/Operations.h"

namespace Korvex3Sync::tests {
namespace {

using Limits = std::map<std::string, std::chrono::seconds>;

template <class... Operations>
Limits LimitsOf() {
    return {{Operations::kName,
             std::chrono::duration_cast<std::chrono::seconds>(Operations::kLimit)}...};
}

/// The operations that the page does not have to name have the limit of "all others".
Limits EveryLimit() {
    return LimitsOf<
        link::GetCamerasInformation, link::GetCameraCount, link::ConnectDevice,
        link::DisConnectDevice, link::ReconnectDevice, link::CloseDeviceCamera,
        link::GetFirewareVersion, link::GetConnectCameraCount, link::GetCameraSerialNumber,
        link::GetCameraResolution, link::WriteUserInfomation, link::ReadUserInfomation,
        link::Project, link::SetProjectorBrightness, link::GetProjectorBrightness,
        link::EnableBlueLaser, link::EnableIRLaser, link::SetStrobeControlledByTrigger,
        link::SetStrobeDutioRatio, link::GetStrobeDutioRatio, link::SetLaserLineDutioRatio,
        link::GetLaserLineDutioRatio, link::SetProjectDutioRatio, link::GetProjectDutioRatio,
        link::SetIRLaserDutioRatio, link::GetIRLaserDutioRatio, link::SetVideoTriggerPeriod,
        link::GetVideoTriggerPeriod, link::EnableVideoTrigger, link::SetDistanceIndicate,
        link::SetCameraExposureAndGain, link::GetCameraExposureAndGain,
        link::SetStatusCallBackFunction, link::SetScanCallBackFunction, link::SnapColorImage>();
}

TEST(ServiceModeDocument, TellsTheLimitsOfTheOperations) {
    std::ifstream page(KORVEX_SOURCE_DIR "/docs/service-mode.md");
    std::string line;
    while (std::getline(page, line) && line != "| operation | limit |") {
    }
    std::getline(page, line);  // under the head
    Limits written;
    std::chrono::seconds others{};
    while (std::getline(page, line) && line.starts_with("| ")) {
        const auto border = line.find(" | ", 2);
        ASSERT_NE(border, std::string::npos) << line;
        const std::chrono::seconds limit(std::stoi(line.substr(border + 3)));
        std::string names = line.substr(2, border - 2);
        if (names == "all others") {
            others = limit;
        }
        std::erase(names, '`');
        std::erase(names, ',');
        std::istringstream words(names);
        for (std::string name; words >> name;) {
            written[name] = limit;
        }
    }
    for (const auto& [name, limit] : EveryLimit()) {
        const auto found = written.find(name);
        EXPECT_EQ(found == written.end() ? others : found->second, limit) << name;
    }
    EXPECT_EQ(written.count("snapColorImage"), 1U);
}

}  // namespace
}  // namespace Korvex3Sync::tests
