#pragma once

#include <CLI/CLI.hpp>
#include <charconv>
#include <sstream>
#include <string>

namespace Korvex3Sync::korvexctl {

/// Lets a number of the range pass. Also refuses what is a number and is in no range ("nan"), which
/// CLI::Range lets pass.
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

/// Adds an option for a number; the help names unit, range and default, which is what `value`
/// holds. `value` must live until the command line is read.
template <typename Number>
void AddNumber(CLI::App& command, const std::string& name, Number& value, const char* unit,
               Number low, Number high, const std::string& help) {
    std::ostringstream text;
    text << help << ", " << low << " to " << high << " (default " << value << ")";
    command.add_option(name, value, text.str())->type_name(unit)->check(InRange(low, high));
}

}  // namespace Korvex3Sync::korvexctl
