#include "korvexctl/cli/HelpFormatter.h"

#include <algorithm>

#include "korvexctl/cli/ExitCodes.h"
#include "platform/text/Wrap.h"

namespace Korvex3Sync::korvexctl {

namespace {

/// Where the texts of the rows begin.
constexpr std::size_t kTextColumn = 30;

std::string Row(const std::string& term, const std::string& text) {
    std::string row = "  " + term;
    if (row.size() + 2 > kTextColumn) {
        row.append("\n").append(kTextColumn, ' ');
    } else {
        row.resize(kTextColumn, ' ');
    }
    return row + text + '\n';
}

std::string Section(const std::string& title, const std::vector<const CLI::Option*>& options) {
    std::string text = options.empty() ? "" : '\n' + title + ":\n";
    for (const CLI::Option* option : options) {
        text += Row(OptionTerm(*option), OptionText(*option));
    }
    return text;
}

std::string CommandsSection(const CLI::App& app) {
    const auto commands = CommandsOf(app);
    std::string text = commands.empty() ? "" : "\nCommands:\n";
    for (const CLI::App* command : commands) {
        text += Row(command->get_name(), command->get_description());
    }
    return text;
}

bool IsRepeated(const CLI::Option& option) {
    return option.get_expected_max() >= CLI::detail::expected_max_vector_size;
}

}  // namespace

std::vector<const CLI::App*> CommandsOf(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App* sub) { return !sub->get_name().empty(); });
}

std::vector<const CLI::Option*> ArgumentsOf(const CLI::App& command) {
    return command.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

std::vector<const CLI::Option*> OptionsOf(const CLI::App& command) {
    std::vector<const CLI::Option*> options = command.get_options([](const CLI::Option* option) {
        return option->nonpositional() && option->get_group() != kGlobalOptions;
    });
    // A group of options that go together is a command without a name.
    for (const CLI::App* group :
         command.get_subcommands([](const CLI::App* sub) { return sub->get_name().empty(); })) {
        for (const CLI::Option* option : OptionsOf(*group)) {
            // CLI11 gives a group the help of its command as well.
            if (option != group->get_help_ptr()) {
                options.push_back(option);
            }
        }
    }
    return options;
}

std::vector<const CLI::Option*> GlobalOptions(const CLI::App& app) {
    const CLI::App* root = &app;
    while (root->get_parent() != nullptr) {
        root = root->get_parent();
    }
    return root->get_options(
        [](const CLI::Option* option) { return option->get_group() == kGlobalOptions; });
}

std::string OptionTerm(const CLI::Option& option) {
    const std::string type = option.get_type_name();
    if (option.get_positional()) {
        return type + (IsRepeated(option) && !type.ends_with("...") ? "..." : "");
    }
    std::string term;
    for (const std::string& name : option.get_snames()) {
        term += '-' + name;
    }
    for (const std::string& name : option.get_lnames()) {
        term += (term.empty() ? "--" : ", --") + name;
    }
    // "[=FILE]" belongs to the name.
    return term + (type.empty() || type.starts_with('[') ? "" : " ") + type;
}

std::string OptionText(const CLI::Option& option) {
    const std::string value = option.get_default_str();
    return option.get_description() + (value.empty() ? "" : " (default " + value + ")");
}

std::string CommandPath(const CLI::App& command) {
    const CLI::App* const parent = command.get_parent();
    return (parent == nullptr ? "" : CommandPath(*parent) + ' ') + command.get_name();
}

std::string UsageText(const CLI::App& command) {
    std::string text = CommandPath(command) + " [OPTIONS]";
    for (const CLI::Option* argument : ArgumentsOf(command)) {
        const std::string term = OptionTerm(*argument);
        text += argument->get_required() ? ' ' + term : " [" + term + ']';
    }
    return text + (CommandsOf(command).empty() ? "" : " COMMAND");
}

std::string HelpFormatter::make_help(const CLI::App* app, std::string /*name*/,
                                     CLI::AppFormatMode /*mode*/) const {
    std::string text = app->get_description() + "\nUsage: " + UsageText(*app) + '\n';
    text += Section("Arguments", ArgumentsOf(*app));
    text += Section("Options", OptionsOf(*app));
    text += CommandsSection(*app);
    const std::string own = app->get_footer();
    text += (own.empty() ? "" : '\n' + own + '\n');
    text += Section(kGlobalOptions, GlobalOptions(*app)) + '\n' + ExitCodeTable();
    return text::Wrapped(text, m_width);
}

}  // namespace Korvex3Sync::korvexctl
