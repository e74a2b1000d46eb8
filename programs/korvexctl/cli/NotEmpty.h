#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace Korvex3Sync::korvexctl {

/// Rejects an empty file or folder name, for example from an unset script variable.
inline CLI::Validator NotEmpty() {
    return CLI::Validator(
        [](const std::string& text) {
            return text.empty() ? std::string("the name is empty") : std::string();
        },
        "");
}

}  // namespace Korvex3Sync::korvexctl
