#include <CLI/CLI.hpp>
#include <memory>

#include "korvexctl/cli/NotEmpty.h"
#include "korvexctl/cli/NumberOption.h"
#include "korvexctl/commands/Commands.h"
#include "korvexctl/head/ModeOption.h"
#include "korvexctl/scan/Scan.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr int kMostImageSets = 1'000'000;
constexpr int kMostKept = 10'000;
constexpr int kMostBuffers = 256;
constexpr double kShortestTimeoutSeconds = 0.1;
constexpr double kLongestTimeoutSeconds = 3600;
constexpr int kLongestPeriodMs = 10'000;
constexpr int kMostPercent = 100;
constexpr int kHighestIrLevel = 10;
constexpr int kHighestLaserMode = 3;

void AddLightOptions(CLI::App& command, LightOptions& light) {
    AddModeOption(
        command, light.mode, "Light and images of each set: ",
        " (default " + ModeName(light.mode) + "); with color each set has a colour image");
    AddNumber(command, "--period", light.periodMs, "MS", 1, kLongestPeriodMs,
              "Time from trigger to trigger in milliseconds");
    AddNumber(command, "--laser-mode", light.laserMode, "N", 0, kHighestLaserMode,
              "Work mode of the laser lines, a number");
    AddNumber(command, "--laser-duty", light.laserDutyPercent, "PERCENT", 0, kMostPercent,
              "Laser line duty ratio in percent");
    AddNumber(command, "--brightness", light.brightnessPercent, "PERCENT", 0, kMostPercent,
              "Projector brightness in percent (pattern modes)");
    AddNumber(command, "--projector-duty", light.projectorDutyPercent, "PERCENT", 0, kMostPercent,
              "Projector duty ratio in percent (pattern modes)");
    AddNumber(command, "--strobe-duty", light.strobeDutyPercent, "PERCENT", 0, kMostPercent,
              "Strobe duty ratio in percent");
    AddNumber(command, "--ir-level", light.irLevel, "LEVEL", 0, kHighestIrLevel,
              "Infrared laser level, a number without unit; 0 leaves it off");
}

void AddScanOptions(CLI::App& command, ScanOptions& scan) {
    AddNumber(command, "--sets", scan.sets, "N", 1, kMostImageSets, "Image sets to take, a count");
    command
        .add_option(
            "--out", scan.folder,
            "Folder for the pictures, contact-sheet.png and scan.json; made when it is "
            "missing; files of these names that an earlier scan left in it are removed once "
            "the first set is there, and a scan without a set changes nothing in it (without it: "
            "nothing is written)")
        ->type_name("DIR")
        ->check(NotEmpty());
    AddNumber(command, "--keep", scan.keep, "K", 0, kMostKept,
              "Image sets to write as PNG, a count, spread over the scan");
    AddNumber(command, "--buffers", scan.buffers, "N", 1, kMostBuffers,
              "Image sets that may wait to be written, a count, 4 MB of memory each; a set that "
              "finds no room is not written");
    AddNumber(command, "--timeout", scan.timeoutSeconds, "S", kShortestTimeoutSeconds,
              kLongestTimeoutSeconds, "Give up when no set has come for so many seconds");
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
