#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Korvex3Sync::text {

/// Up to three of `names` that `typed` may be a misspelling of, the nearest first: a few letters
/// differ, or all the words between hyphens occur in it.
std::vector<std::string> NearNames(std::string_view typed, const std::vector<std::string>& names);

/// The same as the end of a message, "; did you mean a or b"; may be empty.
std::string DidYouMean(std::string_view typed, const std::vector<std::string>& names);

}  // namespace Korvex3Sync::text
