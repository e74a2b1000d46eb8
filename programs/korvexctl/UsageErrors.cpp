#include "korvexctl/UsageErrors.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <vector>

#include "korvexctl/cli/HelpFormatter.h"
#include "platform/text/NearNames.h"

namespace Korvex3Sync::korvexctl {

namespace {

std::vector<std::string> CommandNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : CommandsOf(app)) {
        names.push_back(command->get_name());
    }
    return names;
}

/// The long names of the options that this command accepts.
std::vector<std::string> OptionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* from = &app; from != nullptr; from = from->get_parent()) {
        for (const CLI::Option* option : OptionsOf(*from)) {
            for (const std::string& name : option->get_lnames()) {
                names.push_back("--" + name);
            }
        }
    }
    for (const CLI::Option* option : GlobalOptions(app)) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

const CLI::App& ChosenCommand(const CLI::App& app) {
    const CLI::App* command = &app;
    while (!command->get_subcommands().empty()) {
        command = command->get_subcommands().front();
    }
    return *command;
}

/// "; did you mean --virtual=head.toml" for a file name behind --virtual.
std::string MeantAsHeadFile(const std::string& word, std::span<const char* const> words) {
    const auto isPair = [&word](std::string_view before, std::string_view after) {
        return before == "--virtual" && after == word;
    };
    const bool follows = std::adjacent_find(words.begin(), words.end(), isPair) != words.end();
    return follows && word.find_first_of("./") != std::string::npos
               ? "; did you mean --virtual=" + word
               : "";
}

std::string Unknown(const CLI::App& command, const std::string& word,
                    std::span<const char* const> words) {
    const bool plainWords =
        std::any_of(words.begin(), words.end(), [](std::string_view text) { return text == "--"; });
    if (word.starts_with('-') && !plainWords) {
        const std::string name = word.substr(0, word.find('='));
        const std::vector<std::string> known = OptionNames(command);
        if (std::find(known.begin(), known.end(), name) != known.end()) {
            // An option of an outer command would have been recognised here.
            return name + " is an option of " + command.get_name() + " and must follow that word";
        }
        return "unknown option " + name + text::DidYouMean(name, known);
    }
    const std::string headFile = MeantAsHeadFile(word, words);
    if (command.get_require_subcommand_min() > 0) {
        return "unknown command \"" + word + "\"" +
               (headFile.empty() ? text::DidYouMean(word, CommandNames(command)) : headFile);
    }
    return "unexpected argument \"" + word + "\"" + headFile;
}

/// What is missing of a group of which one option has to be given; empty when nothing is.
std::string WrongInGroup(const CLI::App& command) {
    for (const CLI::App* group :
         command.get_subcommands([](const CLI::App* sub) { return sub->get_name().empty(); })) {
        std::vector<std::string> names;
        std::size_t given = 0;
        for (const CLI::Option* option : OptionsOf(*group)) {
            if (option == group->get_help_ptr()) {
                continue;
            }
            names.push_back(option->get_name());
            given += option->count() > 0 ? 1 : 0;
        }
        const std::string list = CLI::detail::join(names, ", ");
        if (given < group->get_require_option_min()) {
            return "missing option, one of " + list;
        }
        if (given > group->get_require_option_max() && group->get_require_option_max() > 0) {
            return "only one of " + list + " can be given";
        }
    }
    return "";
}

std::string Missing(const CLI::App& command) {
    const auto arguments = ArgumentsOf(command);
    for (const auto& options : {arguments, OptionsOf(command)}) {
        for (const CLI::Option* option : options) {
            if (option->get_required() && option->count() == 0) {
                return (option->get_positional() ? "missing argument " : "missing option ") +
                       OptionTerm(*option);
            }
        }
    }
    if (command.get_require_subcommand_min() > 0) {
        return "missing command, one of " + CLI::detail::join(CommandNames(command), ", ");
    }
    return WrongInGroup(command);
}

/// The option that an error of CLI11 is about, whose message begins with its name; null for none.
const CLI::Option* OptionOf(const CLI::App& command, const std::string& message) {
    const std::string name = message.substr(0, message.find_first_of(": "));
    for (const auto& options : {ArgumentsOf(command), OptionsOf(command), GlobalOptions(command)}) {
        for (const CLI::Option* option : options) {
            // A flag is named without hyphens.
            if (option->get_name() == name || option->check_lname(name)) {
                return option;
            }
        }
    }
    return nullptr;
}

/// An option with too few values, too many, or one that takes none.
std::string WrongNumber(const CLI::Option& option) {
    const std::string name = option.get_name();
    const int expected = option.get_expected_min() * std::max(option.get_type_size(), 1);
    if (expected == 0) {
        return name + " takes no value";
    }
    const auto given = static_cast<int>(option.results().size());
    const std::string values =
        std::to_string(expected) + (expected == 1 ? " value, " : " values, ");
    if (given < expected) {
        return "missing value: " + OptionTerm(option);
    }
    return name + " takes " + values + "not " + std::to_string(given);
}

}  // namespace

std::string WhatIsWrong(const CLI::App& app, const CLI::ParseError& error,
                        std::span<const char* const> words) {
    const CLI::App& command = ChosenCommand(app);
    std::string message = error.what();
    const bool required = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    if (required || dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
        std::vector<std::string> unknown = app.remaining(true);
        std::erase(unknown, "--");
        if (!unknown.empty()) {
            return Unknown(command, unknown.front(), words);
        }
        const std::string missing = Missing(command);
        return missing.empty() ? message : missing;
    }
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) {
        if (const CLI::Option* option = OptionOf(command, message)) {
            return WrongNumber(*option);
        }
    }
    if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr) {
        const std::string between = " excludes ";
        const auto at = message.find(between);
        return message.substr(0, at) + " and " + message.substr(at + between.size()) +
               " exclude each other";
    }
    return message;
}

}  // namespace Korvex3Sync::korvexctl
