#include "korvexctl/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "korvexctl/Version.h"
#include "korvexctl/cli/ExitCodes.h"
#include "korvexctl/cli/NearNames.h"
#include "korvexctl/cli/NotEmpty.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr const char* kGlobalOptions = "Global options, before or after the command";

void AddGlobalOptions(CLI::App& app, CommandLine& line) {
    app.add_flag("--virtual", line.virtualHead,
                 "Use a simulated head: the built-in one, or with =HEADFILE the one that this file "
                 "describes")
        ->type_name("[=HEADFILE]")
        ->group(kGlobalOptions);
    app.add_flag("--json", line.json, "Print one JSON document and nothing else to standard output")
        ->group(kGlobalOptions);
    app.add_flag("-v,--verbose", line.verbose,
                 "Show what the library prints and logs on standard error")
        ->group(kGlobalOptions);
    app.add_option("--log", line.logFile, "Append what the library prints and logs to this file")
        ->type_name("FILE")
        ->group(kGlobalOptions)
        ->check(NotEmpty());
}

std::string GlobalOptionsText(const CLI::App& app) {
    return CLI::Formatter().make_group(kGlobalOptions, false,
                                       app.get_options([](const CLI::Option* option) {
                                           return option->get_group() == kGlobalOptions;
                                       }));
}

/// Appends the same text to the help of all subcommands.
void EndHelpWith(const std::string& end, CLI::App& app) {
    for (CLI::App* command :
         app.get_subcommands([](CLI::App* sub) { return !sub->get_name().empty(); })) {
        std::string own = command->get_footer();
        while (own.ends_with('\n')) {
            own.pop_back();
        }
        own.append(own.empty() ? "" : "\n").append(end);
        command->footer(own);
        EndHelpWith(end, *command);
    }
}

std::vector<std::string> CommandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command :
         app.get_subcommands([](const CLI::App* sub) { return !sub->get_name().empty(); })) {
        names.push_back(command->get_name());
    }
    return names;
}

/// The long names of the options that this command accepts.
std::vector<std::string> OptionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* from = &app; from != nullptr; from = from->get_parent()) {
        for (const CLI::Option* option : from->get_options({})) {
            for (const std::string& name : option->get_lnames()) {
                names.push_back("--" + name);
            }
        }
    }
    return names;
}

/// The error of a command line that names something unknown, or no command; otherwise CLI11's own
/// message. `plainWords`: it has a "--", after which nothing is an option.
std::string WhatIsWrong(const CLI::App& app, const CLI::ParseError& error, bool plainWords) {
    if (dynamic_cast<const CLI::ExtrasError*>(&error) == nullptr &&
        dynamic_cast<const CLI::RequiredError*>(&error) == nullptr) {
        return error.what();
    }
    const CLI::App* command = &app;
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().front();
    }
    const bool commandMissing = command->get_require_subcommand_min() > 0;
    std::vector<std::string> unknown = app.remaining(true);
    std::erase(unknown, "--");
    if (unknown.empty()) {
        return commandMissing
                   ? "missing command, one of " + CLI::detail::join(CommandNames(*command), ", ")
                   : error.what();
    }
    const std::string& first = unknown.front();
    if (first.starts_with('-') && !plainWords) {
        const std::string name = first.substr(0, first.find('='));
        const std::vector<std::string> known = OptionNames(*command);
        if (std::find(known.begin(), known.end(), name) != known.end()) {
            // An option of an outer command would have been recognised here.
            return name + " is an option of " + command->get_name() + " and must follow that word";
        }
        return "unknown option " + name + DidYouMean(name, known);
    }
    if (commandMissing) {
        return "unknown command \"" + first + "\"" + DidYouMean(first, CommandNames(*command));
    }
    return "unexpected argument \"" + first + "\"";
}

CommandLineResult BadUsage(CommandLineResult result, const std::string& wrong) {
    result.badUsage = true;
    result.text = wrong + " (see --help)";
    return result;
}

}  // namespace

CommandLineResult ReadCommandLine(int count, const char* const* arguments) {
    CommandLineResult result;
    CommandLine& line = result.commandLine;
    const auto isThere = [arguments, count](std::string_view word) {
        return std::any_of(arguments, arguments + count,
                           [word](std::string_view text) { return text == word; });
    };
    CLI::App app(
        "Controls a handheld 3D scanner head: lists its parts, sets it, scans and checks it.",
        "korvexctl");
    app.set_version_flag("--version", std::string("korvexctl ") + kVersion);
    app.fallthrough();
    app.require_subcommand(1);
    AddGlobalOptions(app, line);

    std::map<const CLI::App*, RunCommand> runs;
    for (const Command& command : Commands()) {
        CLI::App& subcommand = *app.add_subcommand(command.name, command.help);
        runs[&subcommand] = command.add(subcommand);
    }
    app.footer(ExitCodeTable());
    EndHelpWith(GlobalOptionsText(app) + "\n" + ExitCodeTable(), app);

    try {
        app.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        // It may follow the word that was not understood.
        line.json = isThere("--json");
        std::ostringstream out;
        std::ostringstream wrong;
        if (app.exit(error, out, wrong) != 0) {
            return BadUsage(std::move(result), WhatIsWrong(app, error, isThere("--")));
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
    line.run = std::move(runs[app.get_subcommands().front()]);
    result.run = true;
    return result;
}

}  // namespace Korvex3Sync::korvexctl
