#pragma once

#include <gmock/gmock.h>

#include <regex>
#include <string>

namespace Korvex3Sync::tests {

// GoogleTest's own matchers know no brackets on Windows.

/// The whole text matches a regular expression.
MATCHER_P(MatchesPattern, pattern, "matches \"" + std::string(pattern) + '"') {
    return std::regex_match(std::string(arg), std::regex(std::string(pattern)));
}

/// A part of the text matches it.
MATCHER_P(ContainsPattern, pattern, "contains \"" + std::string(pattern) + '"') {
    return std::regex_search(std::string(arg), std::regex(std::string(pattern)));
}

}  // namespace Korvex3Sync::tests
