#pragma once

#include <span>
#include <string>
#include <string_view>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace Korvex3Sync::korvexctl {

/// What is wrong with a command line that could not be read, for a person: names what is unknown,
/// missing or too much, and what was probably meant. `words`: the command line.
std::string WhatIsWrong(const CLI::App& app, const CLI::ParseError& error,
                        std::span<const char* const> words);

}  // namespace Korvex3Sync::korvexctl
