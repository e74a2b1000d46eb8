#include <CLI/CLI.hpp>
#include <array>
#include <memory>

#include "korvexctl/cli/NumberOption.h"
#include "korvexctl/cli/PathOption.h"
#include "korvexctl/commands/Commands.h"
#include "korvexctl/head/ModeOption.h"
#include "korvexctl/scan/Scan.h"
#include "korvexctl/scan/ScanSettings.h"
#include "korvexctl/settings/ProfileFile.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr int kDefaultImageSets = 100;
constexpr int kMostImageSets = 1'000'000;
constexpr int kMostKept = 10'000;
constexpr int kMostBuffers = 4096;
constexpr double kShortestTimeoutSeconds = 0.1;
constexpr double kLongestTimeoutSeconds = 86'400;
constexpr double kShortestSeconds = 0.1;
constexpr double kLongestSeconds = 1e7;
constexpr const char* kAsOnTheHead = " (default: as it is on the head)";

/// An option that gives a setting a value, the same for each of its fields.
struct ValueOption {
    const char* option;
    const char* setting;
    const char* unit;
    const char* help;
};

constexpr std::array kValueOptions{
    ValueOption{"--period", "trigger-period", "MS", "Time from trigger to trigger in milliseconds"},
    ValueOption{"--laser-duty", "laser-line-duty", "PERCENT", "Laser line duty ratio in percent"},
    ValueOption{"--brightness", "projector-brightness", "PERCENT",
                "Projector brightness in percent"},
    ValueOption{"--projector-duty", "projector-duty", "PERCENT", "Projector duty ratio in percent"},
    ValueOption{"--strobe-duty", "strobe-duty", "PERCENT", "Strobe duty ratios in percent"},
};

struct ScanArguments {
    HeadChoice head;
    ScanOptions scan;
    bool endless = false;
    std::filesystem::path profile;
    std::optional<CAMERA_TRIGGER_MODE> mode;
    std::optional<int> laserMode;
    std::optional<int> irLevel;
    std::array<std::optional<int>, kValueOptions.size()> values;
    std::optional<double> exposureMs;
    std::optional<double> gain;
};

/// The range of a setting, of the first of its values if it has several.
const Field& RangeOf(const char* setting) {
    return RequireSetting(setting).fields.front();
}

CLI::Option& AddValue(CLI::App& command, const ValueOption& option, std::optional<int>& value,
                      const char* more) {
    const Field& range = RangeOf(option.setting);
    return AddNumberOption(command, option.option, value, option.unit, static_cast<int>(range.low),
                           static_cast<int>(range.high), option.help, more);
}

/// An option for the exposure or the gain of every camera.
void AddCameraValue(CLI::App& command, const char* name, std::optional<double>& value,
                    const char* setting, const char* unit, const std::string& help) {
    const Field range = RangeOf(setting);
    CLI::Option& option =
        *command.add_option(name, value, help + ", " + RangeText(range) + kAsOnTheHead)
             ->type_name(unit);
    TakeNumber(option, [range](const std::string& typed) { return ReadValueText(range, typed); });
}

void AddLightOptions(CLI::App& command, ScanArguments& asked) {
    AddModeOption(
        command, asked.mode, "Light and images of each set: ",
        " (default " + ModeName(ScanLight().mode) + "); with color each set has a colour image");
    AddValue(command, {"--laser-mode", "blue-laser", "N", "Work mode of the laser lines, a number"},
             asked.laserMode, (" (default " + std::to_string(ScanLight().laserMode) + ")").c_str());
    AddNumberOption(command, "--ir-level", asked.irLevel, "LEVEL", 0,
                    static_cast<int>(RangeOf("ir-laser-level").high),
                    "Switch the infrared laser on at this level, a number without unit",
                    "; 0 leaves it off (default 0)");
    AddPathOption(command, "--profile", asked.profile, "FILE",
                  "Send the settings of this profile first; options of this command line "
                  "override it");
    for (std::size_t i = 0; i < kValueOptions.size(); ++i) {
        AddValue(command, kValueOptions[i], asked.values[i], kAsOnTheHead);
    }
    AddCameraValue(command, "--exposure", asked.exposureMs, "exposure.0", "MS",
                   "Exposure time of every camera in milliseconds");
    AddCameraValue(command, "--gain", asked.gain, "gain.0", "STEPS",
                   "Gain of every camera in steps");
}

void AddEndOptions(CLI::App& command, ScanArguments& asked) {
    ScanOptions& scan = asked.scan;
    CLI::Option& sets = AddNumberOption(
        command, "--sets", scan.end.sets, "N", 1, kMostImageSets, "Image sets to take, a count",
        " (default " + std::to_string(kDefaultImageSets) + ", or as many as come in --seconds)");
    CLI::Option& seconds =
        AddNumberOption(command, "--seconds", scan.end.seconds, "S", kShortestSeconds,
                        kLongestSeconds, "End after this many seconds", "");
    command.add_flag("--endless", asked.endless, "Scan until Ctrl-C, which is then a good end")
        ->excludes(&sets)
        ->excludes(&seconds);
    AddNumberOption(
        command, "--timeout", scan.timeoutSeconds, "S", kShortestTimeoutSeconds,
        kLongestTimeoutSeconds, "Give up when no set has arrived for this many seconds",
        " (default " + DecimalText(ScanOptions().TimeoutSeconds()) + ", with --reconnect 60)");
    command.add_flag("--reconnect", scan.reconnect,
                     "When the head is away, reconnect it, restore its settings and go on");
}

void AddFileOptions(CLI::App& command, ScanOptions& scan) {
    CLI::Option& out = AddPathOption(
        command, "--out", scan.folder, "DIR",
        "Folder for the pictures, contact-sheet.png, run.svg, sets.csv and scan.json; created if "
        "missing; files of these names from an earlier scan are removed once the first set has "
        "arrived, and a scan without a set changes nothing in it (default: nothing is written)");
    AddNumber(
        command, "--keep", scan.keep, "K", 0, kMostKept,
        "Image sets to write as PNG, spread over the scan (without an end: the first ones); the "
        "scan fails if one cannot be written in time; a count");
    command
        .add_flag("--record", scan.recording,
                  "Write every set into DIR as the camera gave it, as far as the disk keeps up, "
                  "and a head file replay.toml that replays them")
        ->needs(&out);
    AddNumberOption(command, "--buffers", scan.buffers, "N", 1, kMostBuffers,
                    "Image sets that may wait to be written, a count, 4 MB of memory each",
                    " (default: as many as --keep, 32 to 256)");
}

/// What the command line says about settings, exposure and gain for every camera order.
std::vector<Assignment> GivenSettings(const ScanArguments& asked) {
    std::vector<Assignment> given;
    const auto give = [&given](const std::string& name, SettingValue value) {
        given.push_back({&RequireSetting(name), std::move(value)});
    };
    if (asked.mode) {
        give("trigger-mode", {static_cast<double>(*asked.mode)});
    }
    if (asked.laserMode) {
        give("blue-laser", {static_cast<double>(*asked.laserMode), 1});
    }
    if (asked.irLevel) {
        give("ir-laser", {*asked.irLevel > 0 ? 1.0 : 0.0});
        if (*asked.irLevel > 0) {
            give("ir-laser-level", {static_cast<double>(*asked.irLevel)});
        }
    }
    for (std::size_t i = 0; i < kValueOptions.size(); ++i) {
        if (asked.values[i]) {
            const Setting& setting = RequireSetting(kValueOptions[i].setting);
            give(setting.name, SettingValue(setting.fields.size(), *asked.values[i]));
        }
    }
    for (int order = 0; order < kCameraOrders; ++order) {
        if (asked.exposureMs) {
            give("exposure." + std::to_string(order), {*asked.exposureMs});
        }
        if (asked.gain) {
            give("gain." + std::to_string(order), {*asked.gain});
        }
    }
    return given;
}

Outcome RunAsked(const ScanArguments& asked, Output& output) {
    ScanOptions scan = asked.scan;
    if (!scan.end.sets && !scan.end.seconds && !asked.endless) {
        scan.end.sets = kDefaultImageSets;
    }
    if (!asked.profile.empty()) {
        scan.profile = ReadProfileFile(asked.profile).settings;
    }
    scan.commandLine = GivenSettings(asked);
    return RunScan(asked.head, scan, output);
}

}  // namespace

RunCommand AddScan(CLI::App& command) {
    const auto asked = std::make_shared<ScanArguments>();
    AddHeadOptions(command, asked->head, true);
    AddEndOptions(command, *asked);
    AddFileOptions(command, asked->scan);
    AddLightOptions(command, *asked);
    command.footer(
        "Switches light and trigger of its mode on, and off at the end. All other settings stay "
        "as "
        "they are on the head, unless the command line or the profile gives them.");
    return [asked](Output& output) { return RunAsked(*asked, output); };
}

}  // namespace Korvex3Sync::korvexctl
