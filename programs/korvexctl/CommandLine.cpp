#include "korvexctl/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <map>
#include <sstream>
#include <string_view>

#include "korvexctl/ExitCodes.h"
#include "korvexctl/TriggerModes.h"
#include "korvexctl/Version.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr int kMostSets = 1'000'000;
constexpr int kMostKept = 200;
constexpr double kShortestTimeoutSeconds = 0.1;
constexpr double kLongestTimeoutSeconds = 3600;
constexpr int kLongestPeriodMs = 10'000;
constexpr int kMostPercent = 100;
constexpr int kHighestIrLevel = 10;
constexpr int kHighestLaserMode = 3;

void AddGlobalOptions(CLI::App& app, CommandLine& line) {
    app.add_flag("--virtual", line.virtualHead,
                 "Use a simulated head: the built-in one, or with =HEADFILE the one that this file "
                 "describes")
        ->type_name("[=HEADFILE]");
    app.add_flag("--json", line.json,
                 "Print one JSON document and nothing else to standard output");
    app.add_flag("-v,--verbose", line.verbose,
                 "Show what the library prints and logs on standard error");
    app.add_option("--log", line.logFile, "Append what the library prints and logs to this file")
        ->type_name("FILE");
}

void AddHeadOptions(CLI::App& command, HeadChoice& head, bool withBoard) {
    command
        .add_option("--type", head.cameraType,
                    "Camera type; its first two characters name the maker")
        ->type_name("TYPE")
        ->capture_default_str();
    if (withBoard) {
        command.add_option("--board", head.board, "Serial of the board (without it: any board)")
            ->type_name("SERIAL");
    }
}

/// Also refuses what is a number and is in no range ("nan"), which CLI::Range lets pass.
template <typename Number>
CLI::Validator InRange(Number low, Number high) {
    return CLI::Validator(
        [low, high](std::string& text) {
            Number value{};
            const char* const end = text.data() + text.size();
            const auto [rest, error] = std::from_chars(text.data(), end, value);
            if (error == std::errc() && rest == end && value >= low && value <= high) {
                return std::string();
            }
            std::ostringstream wrong;
            wrong << text << " is not a number from " << low << " to " << high;
            return wrong.str();
        },
        "");
}

template <typename Number>
void AddNumber(CLI::App& command, const std::string& name, Number& value, const char* unit,
               Number low, Number high, const std::string& help) {
    std::ostringstream text;
    text << help << ", " << low << " to " << high << " (default " << value << ")";
    command.add_option(name, value, text.str())->type_name(unit)->check(InRange(low, high));
}

void AddLightOptions(CLI::App& command, LightOptions& light) {
    std::map<std::string, CAMERA_TRIGGER_MODE> modes;
    std::string names;
    for (const TriggerMode& known : kTriggerModes) {
        modes[known.name] = known.mode;
        names += (names.empty() ? "" : ", ") + std::string(known.name);
    }
    command
        .add_option("--mode", light.mode,
                    "Light and images of each set: " + names + " (default " + ModeName(light.mode) +
                        "); with color each set has a colour image")
        ->type_name("MODE")
        ->transform(CLI::CheckedTransformer(modes).description(""));
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
    AddNumber(command, "--sets", scan.sets, "N", 1, kMostSets, "Image sets to take, a count");
    command
        .add_option("--out", scan.folder,
                    "Folder for the pictures and scan.json; made when it is missing (without it: "
                    "nothing is written)")
        ->type_name("DIR");
    AddNumber(command, "--keep", scan.keep, "K", 0, kMostKept,
              "Image sets to write as PNG, a count, spread over the scan; each takes up to 4 MB of "
              "memory");
    AddNumber(command, "--timeout", scan.timeoutSeconds, "S", kShortestTimeoutSeconds,
              kLongestTimeoutSeconds, "Give up when no set has come for so many seconds");
    AddLightOptions(command, scan.light);
}

}  // namespace

CommandLineResult ReadCommandLine(int count, const char* const* arguments) {
    CommandLineResult result;
    CommandLine& line = result.commandLine;
    CLI::App app("Lists, asks and scans with a handheld 3D scanner head.", "korvexctl");
    app.footer("Global options stand before or after the command.\n\n" + ExitCodeTable());
    app.set_version_flag("--version", std::string("korvexctl ") + kVersion);
    app.fallthrough();
    app.require_subcommand(1);
    AddGlobalOptions(app, line);

    CLI::App* list = app.add_subcommand("list", "List the attached cameras");
    AddHeadOptions(*list, line.head, false);
    CLI::App* info = app.add_subcommand("info", "Connect, and show cameras, firmware and settings");
    AddHeadOptions(*info, line.head, true);
    CLI::App* scan = app.add_subcommand("scan", "Connect, set light and trigger, take image sets");
    AddHeadOptions(*scan, line.head, true);
    AddScanOptions(*scan, line.scan);

    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        std::ostringstream out;
        std::ostringstream wrong;
        result.badUsage = app.exit(error, out, wrong) != 0;
        result.text = result.badUsage ? std::string(error.what()) + " (see --help)" : out.str();
        // It may stand behind the word that was not understood.
        line.json = std::any_of(arguments, arguments + count,
                                [](std::string_view text) { return text == "--json"; });
        return result;
    }
    // What CLI11 gives for a flag without a value.
    if (line.virtualHead == "true") {
        line.virtualHead = "default";
    }
    line.command = list->parsed()   ? CommandLine::Command::List
                   : info->parsed() ? CommandLine::Command::Info
                                    : CommandLine::Command::Scan;
    result.run = true;
    return result;
}

}  // namespace Korvex3Sync::korvexctl
