#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace Korvex3Sync::korvexctl {

/// Refuses an empty name of a file or folder, as an unset variable of a script gives.
inline CLI::Validator NotEmpty() {
    return CLI::Validator(
        [](const std::string& text) {
            return text.empty() ? std::string("the name is empty") : std::string();
        },
        "");
}

}  // namespace Korvex3Sync::korvexctl
