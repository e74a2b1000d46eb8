#include <CLI/CLI.hpp>
#include <memory>

#include "korvexctl/cli/NotEmpty.h"
#include "korvexctl/cli/NumberOption.h"
#include "korvexctl/commands/Commands.h"
#include "korvexctl/head/ModeOption.h"
#include "korvexctl/scan/Scan.h"
#include "korvexctl/settings/Settings.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr int kMostImageSets = 1'000'000;
constexpr int kMostKept = 10'000;
constexpr int kMostBuffers = 256;
constexpr double kShortestTimeoutSeconds = 0.1;
constexpr double kLongestTimeoutSeconds = 3600;

/// The range of a setting, of the first of its values if it has several.
const Field& RangeOf(const char* setting) {
    return RequireSetting(setting).fields.front();
}

/// An option for what a setting sets too: both take the same numbers.
void AddSetting(CLI::App& command, const char* option, int& value, const char* unit,
                const char* setting, const char* help) {
    const Field& range = RangeOf(setting);
    AddNumber(command, option, value, unit, static_cast<int>(range.low),
              static_cast<int>(range.high), help);
}

void AddLightOptions(CLI::App& command, LightOptions& light) {
    AddModeOption(
        command, light.mode, "Light and images of each set: ",
        " (default " + ModeName(light.mode) + "); with color each set has a colour image");
    AddSetting(command, "--period", light.periodMs, "MS", "trigger-period",
               "Time from trigger to trigger in milliseconds");
    AddSetting(command, "--laser-mode", light.laserMode, "N", "blue-laser",
               "Work mode of the laser lines, a number");
    AddSetting(command, "--laser-duty", light.laserDutyPercent, "PERCENT", "laser-line-duty",
               "Laser line duty ratio in percent");
    AddSetting(command, "--brightness", light.brightnessPercent, "PERCENT", "projector-brightness",
               "Projector brightness in percent (pattern modes)");
    AddSetting(command, "--projector-duty", light.projectorDutyPercent, "PERCENT", "projector-duty",
               "Projector duty ratio in percent (pattern modes)");
    AddSetting(command, "--strobe-duty", light.strobeDutyPercent, "PERCENT", "strobe-duty",
               "Strobe duty ratio in percent");
    AddNumber(command, "--ir-level", light.irLevel, "LEVEL", 0,
              static_cast<int>(RangeOf("ir-laser-level").high),
              "Infrared laser level, a number without unit; 0 leaves it off");
}

void AddScanOptions(CLI::App& command, ScanOptions& scan) {
    AddNumber(command, "--sets", scan.sets, "N", 1, kMostImageSets, "Image sets to take, a count");
    command
        .add_option(
            "--out", scan.folder,
            "Folder for the pictures, contact-sheet.png and scan.json; created if missing; files "
            "of these names from an earlier scan are removed once the first set has arrived, and a "
            "scan without a set changes nothing in it (default: nothing is written)")
        ->type_name("DIR")
        ->check(NotEmpty());
    AddNumber(command, "--keep", scan.keep, "K", 0, kMostKept,
              "Image sets to write as PNG, a count, spread over the scan");
    AddNumber(command, "--buffers", scan.buffers, "N", 1, kMostBuffers,
              "Image sets that may wait to be written, a count, 4 MB of memory each; further sets "
              "are not written");
    AddNumber(command, "--timeout", scan.timeoutSeconds, "S", kShortestTimeoutSeconds,
              kLongestTimeoutSeconds, "Give up when no set has arrived for this many seconds");
    AddLightOptions(command, scan.light);
}

}  // namespace

RunCommand AddScan(CLI::App& command) {
    struct Asked {
        HeadChoice head;
        ScanOptions scan;
    };
    const auto asked = std::make_shared<Asked>();
    AddHeadOptions(command, asked->head, true);
    AddScanOptions(command, asked->scan);
    return [asked](Output& output) { return RunScan(asked->head, asked->scan, output); };
}

}  // namespace Korvex3Sync::korvexctl
