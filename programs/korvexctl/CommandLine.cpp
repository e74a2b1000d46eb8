#include "korvexctl/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "korvexctl/UsageErrors.h"
#include "korvexctl/Version.h"
#include "korvexctl/cli/HelpFormatter.h"
#include "korvexctl/cli/PathOption.h"
#include "korvexctl/head/HeadChoice.h"

namespace Korvex3Sync::korvexctl {

namespace {

void AddGlobalOptions(CLI::App& app, CommandLine& line) {
    app.add_flag("--virtual", line.virtualHead,
                 "Use a simulated head: the built-in one, or with =HEADFILE the one that this file "
                 "describes")
        ->type_name("[=HEADFILE]")
        ->group(kGlobalOptions);
    app.add_flag(
           "--service", line.service,
           "Reach the head through the device service, which is started again for it; firmware "
           "and usb ask the board directly")
        ->group(kGlobalOptions);
    app.add_flag("--json", line.json, "Print one JSON document and nothing else to standard output")
        ->group(kGlobalOptions);
    app.add_flag("-v,--verbose", line.verbose,
                 "Show what the library prints and logs on standard error")
        ->group(kGlobalOptions);
    AddPathOption(app, "--log", line.logFile, "FILE",
                  "Append what the library prints and logs to this file")
        .group(kGlobalOptions);
}

/// A flag given a value is an error, except the one that takes a head file.
void RefuseValuesOfFlags(CLI::App& app) {
    for (CLI::Option* option : app.get_options()) {
        if (option->get_expected_max() == 0 && option->get_type_name().empty()) {
            option->disable_flag_override();
        }
    }
    for (CLI::App* below : app.get_subcommands({})) {
        RefuseValuesOfFlags(*below);
    }
}

/// Why these options of a command, or of one below it, are not for the device service; empty if
/// they are.
std::string NotInServiceMode(const CLI::App& command) {
    const CLI::Option* const board = command.get_option_no_throw("--board");
    if (board != nullptr && board->count() > 0) {
        return "--board: the device service takes any board";
    }
    const std::string only = HeadChoice().cameraType;
    const CLI::Option* const type = command.get_option_no_throw("--type");
    if (type != nullptr && type->count() > 0 && type->as<std::string>() != only) {
        return "--type: the device service takes cameras of type " + only;
    }
    const auto below = command.get_subcommands();
    return below.empty() ? "" : NotInServiceMode(*below.front());
}

std::string NotInServiceMode(const Command& command, const CLI::App& typed) {
    if (*command.notInServiceMode != 0) {
        return std::string(command.name) + ": " + command.notInServiceMode;
    }
    return command.uses == Uses::Head ? NotInServiceMode(typed) : "";
}

CommandLineResult BadUsage(CommandLineResult result, const std::string& wrong) {
    result.badUsage = true;
    result.text = wrong + " (see --help)";
    return result;
}

}  // namespace

CommandLineResult ReadCommandLine(int count, const char* const* arguments, std::size_t width) {
    CommandLineResult result;
    CommandLine& line = result.commandLine;
    const auto isThere = [arguments, count](std::string_view word) {
        return std::any_of(arguments, arguments + count,
                           [word](std::string_view text) { return text == word; });
    };
    CLI::App app(
        "Controls a handheld 3D scanner head: lists its parts, sets it, scans and checks it.",
        "korvexctl");
    app.formatter(std::make_shared<HelpFormatter>(width));
    app.set_help_flag("-h,--help", "Show this help and exit");
    app.set_version_flag("--version", std::string("korvexctl ") + kVersion,
                         "Show the version and exit");
    app.fallthrough();
    // On every system, a path may begin with a slash.
    app.allow_windows_style_options(false);
    app.require_subcommand(1);
    AddGlobalOptions(app, line);

    struct Asked {
        RunCommand run;
        const Command* command;
    };
    std::map<const CLI::App*, Asked> runs;
    for (const Command& command : Commands()) {
        CLI::App& subcommand = *app.add_subcommand(command.name, command.help);
        runs[&subcommand] = {command.add(subcommand), &command};
    }
    app.footer(
        "KORVEX_VIRTUAL_HEAD in the environment requests a simulated head too: default, or the "
        "path of a head file. --virtual goes before it.");
    RefuseValuesOfFlags(app);

    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        // It may follow the word that was not understood.
        line.json = isThere("--json");
        std::ostringstream out;
        std::ostringstream wrong;
        if (app.exit(error, out, wrong) != 0) {
            return BadUsage(std::move(result),
                            WhatIsWrong(app, error, {arguments, static_cast<std::size_t>(count)}));
        }
        const bool version = dynamic_cast<const CLI::CallForVersion*>(&error) != nullptr;
        result.text =
            version && line.json ? nlohmann::json{{"version", kVersion}}.dump() + '\n' : out.str();
        return result;
    }
    // CLI11 reads it as the flag without a value.
    if (isThere("--virtual=")) {
        return BadUsage(std::move(result), "--virtual=: missing head file name");
    }
    // What CLI11 gives for a flag without a value.
    if (line.virtualHead == "true") {
        line.virtualHead = "default";
    }
    Asked& asked = runs[app.get_subcommands().front()];
    line.run = std::move(asked.run);
    line.uses = asked.command->uses;
    line.notInServiceMode = NotInServiceMode(*asked.command, *app.get_subcommands().front());
    result.run = true;
    return result;
}

}  // namespace Korvex3Sync::korvexctl
