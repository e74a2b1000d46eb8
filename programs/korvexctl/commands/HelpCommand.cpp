#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "korvexctl/Version.h"
#include "korvexctl/cli/BashCompletion.h"
#include "korvexctl/cli/HelpFormatter.h"
#include "korvexctl/cli/ManPage.h"
#include "korvexctl/commands/Commands.h"
#include "korvexctl/head/TriggerModes.h"
#include "korvexctl/settings/Settings.h"
#include "platform/text/NearNames.h"

namespace Korvex3Sync::korvexctl {

namespace {

struct HelpArguments {
    std::vector<std::string> words;
    bool man = false;
    bool completion = false;
    std::string text;
    std::string wrong;  // empty: nothing
};

WordsOfType KnownWords() {
    WordsOfType words;
    for (const TriggerMode& mode : kTriggerModes) {
        words["MODE"].push_back(mode.name);
    }
    for (const Setting& setting : AllSettings()) {
        words["NAME"].push_back(setting.name);
    }
    for (const Command& command : Commands()) {
        words["COMMAND"].push_back(command.name);
    }
    return words;
}

/// Makes the text while the command line is read: it needs the tree of the commands.
void Make(const CLI::App& program, HelpArguments& asked) {
    if (asked.man) {
        asked.text = ManPage(program, kVersion);
        return;
    }
    if (asked.completion) {
        asked.text = BashCompletion(program, KnownWords());
        return;
    }
    const CLI::App* command = &program;
    for (const std::string& word : asked.words) {
        std::vector<std::string> names;
        const CLI::App* next = nullptr;
        for (const CLI::App* below : CommandsOf(*command)) {
            names.push_back(below->get_name());
            next = names.back() == word ? below : next;
        }
        if (next == nullptr) {
            asked.wrong = "unknown command \"" + word + "\"" + text::DidYouMean(word, names) +
                          " (see --help)";
            return;
        }
        command = next;
    }
    asked.text = command->get_formatter()->make_help(command, "", CLI::AppFormatMode::Normal);
}

Outcome ShowHelp(const HelpArguments& asked, Output& output) {
    if (!asked.wrong.empty()) {
        throw CommandError(ExitCode::Usage, asked.wrong);
    }
    Outcome outcome;
    outcome.figures["text"] = asked.text;
    output.Lines(asked.text);
    return outcome;
}

}  // namespace

RunCommand AddHelp(CLI::App& command) {
    const auto asked = std::make_shared<HelpArguments>();
    command
        .add_option("words", asked->words,
                    "The command, which can be several words (default: the whole program)")
        ->type_name("COMMAND");
    CLI::Option* const man =
        command.add_flag("--man", asked->man, "Print the manual page of the program instead");
    command
        .add_flag("--bash-completion", asked->completion,
                  "Print the completion of the program for bash instead")
        ->excludes(man);
    command.callback([asked, &command] { Make(*command.get_parent(), *asked); });
    return [asked](Output& output) { return ShowHelp(*asked, output); };
}

}  // namespace Korvex3Sync::korvexctl
