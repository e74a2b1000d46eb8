#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>
#include <type_traits>
#include <variant>

#include "korvexctl/cli/Decimal.h"

namespace Korvex3Sync::korvexctl {

/// Makes an option accept what `read` returns for the typed text: a number, or the error. The
/// number is written again, because CLI11 reads "010" as octal.
template <typename Read>
void TakeNumber(CLI::Option& option, const Read& read) {
    // Not Option::check, which changes no text.
    option.transform(CLI::Validator(
        [read](std::string& text) {
            const auto number = read(text);
            if (const auto* wrong = std::get_if<std::string>(&number)) {
                return *wrong;
            }
            text = DecimalText(std::get<0>(number));
            return std::string();
        },
        ""));
}

/// Adds an option (or, without hyphens in its name, an argument) for a number of the range, which
/// the help names between `help` and `more`. `value`, a number or an optional one, must live until
/// the command line is read.
template <typename Number, typename Value>
CLI::Option& AddNumberOption(CLI::App& command, const std::string& name, Value& value,
                             const char* unit, Number low, Number high, const std::string& help,
                             const std::string& more) {
    CLI::Option& option =
        *command.add_option(name, value, help + ", " + RangeText(low, high) + more)
             ->type_name(unit);
    TakeNumber(option, [low, high](const std::string& text) -> std::variant<Number, std::string> {
        const std::optional<Number> number = ReadDecimal<Number>(text);
        if (number && *number >= low && *number <= high) {
            return *number;
        }
        const char* const kind = std::is_integral_v<Number> ? "whole number" : "number";
        return "\"" + text + "\" is not a " + kind + " from " + RangeText(low, high);
    });
    return option;
}

/// The same with a default, which is what `value` holds.
template <typename Number>
void AddNumber(CLI::App& command, const std::string& name, Number& value, const char* unit,
               Number low, Number high, const std::string& help) {
    AddNumberOption(command, name, value, unit, low, high, help,
                    " (default " + DecimalText(value) + ")");
}

}  // namespace Korvex3Sync::korvexctl
