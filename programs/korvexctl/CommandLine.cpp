#include "korvexctl/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <sstream>
#include <string_view>
#include <utility>

#include "korvexctl/ExitCodes.h"
#include "korvexctl/NotEmpty.h"
#include "korvexctl/Version.h"

namespace Korvex3Sync::korvexctl {

namespace {

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
        ->type_name("FILE")
        ->check(NotEmpty());
}

bool Has(const char* const* arguments, int count, std::string_view word) {
    return std::any_of(arguments, arguments + count,
                       [word](std::string_view text) { return text == word; });
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

    std::map<const CLI::App*, RunCommand> runs;
    for (const Command& command : Commands()) {
        CLI::App& subcommand = *app.add_subcommand(command.name, command.help);
        runs[&subcommand] = command.add(subcommand);
    }

    try {
        app.parse(count, arguments);
        // CLI11 takes it for the flag without a value.
        if (Has(arguments, count, "--virtual=")) {
            throw CLI::ValidationError("--virtual", kNameIsEmpty);
        }
    } catch (const CLI::ParseError& error) {
        std::ostringstream out;
        std::ostringstream wrong;
        result.badUsage = app.exit(error, out, wrong) != 0;
        result.text = result.badUsage ? std::string(error.what()) + " (see --help)" : out.str();
        // It may stand behind the word that was not understood.
        line.json = Has(arguments, count, "--json");
        return result;
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
