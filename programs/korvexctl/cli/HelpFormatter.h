#pragma once

#include <CLI/CLI.hpp>
#include <cstddef>
#include <string>
#include <vector>

namespace Korvex3Sync::korvexctl {

// The parts of the help, for everything that is made of it.

/// The group of the options that every command takes.
inline constexpr const char* kGlobalOptions = "Global options, before or after the command";

/// The commands of the program or of a command, in the order of the help.
std::vector<const CLI::App*> CommandsOf(const CLI::App& app);
/// What a command takes without a name.
std::vector<const CLI::Option*> ArgumentsOf(const CLI::App& command);
/// The options of a command itself.
std::vector<const CLI::Option*> OptionsOf(const CLI::App& command);
/// The options that every command takes, wherever `app` is in the tree.
std::vector<const CLI::Option*> GlobalOptions(const CLI::App& app);
/// "-v, --verbose", "--log FILE"; of an argument its type: "FILE".
std::string OptionTerm(const CLI::Option& option);
/// What the option is for, and its default.
std::string OptionText(const CLI::Option& option);
/// "korvexctl user-info write"
std::string CommandPath(const CLI::App& command);
/// "korvexctl user-info write [OPTIONS] PAGE DATA"
std::string UsageText(const CLI::App& command);

/// Lays the help out for a terminal with so many columns.
class HelpFormatter : public CLI::FormatterBase {
public:
    explicit HelpFormatter(std::size_t width) : m_width(width) {}

    std::string make_help(const CLI::App* app, std::string name,
                          CLI::AppFormatMode mode) const override;

private:
    const std::size_t m_width;
};

}  // namespace Korvex3Sync::korvexctl
