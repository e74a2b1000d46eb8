#pragma once

#include <toml++/toml.h>

#include <string>
#include <string_view>
#include <variant>

namespace Korvex3Sync {

/// Why a text was refused.
struct TomlError {
    int line;  // from 1
    std::string what;
};

/// Parses a TOML text that may come from anyone. A key with more than 8 dotted parts is refused
/// before the parser sees it: the parser calls itself for each part, and enough of them end the
/// process.
std::variant<toml::table, TomlError> ParseToml(std::string_view text);

}  // namespace Korvex3Sync
