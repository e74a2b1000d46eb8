#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Korvex3Sync::korvexctl {

/// Those of `names` that someone who typed `typed` may have meant, the nearest first, three at
/// most: a few letters differ, or all the words between hyphens occur in it.
std::vector<std::string> NearNames(std::string_view typed, const std::vector<std::string>& names);

/// The same as the end of a message, "; did you mean a or b"; "" when there are none.
std::string DidYouMean(std::string_view typed, const std::vector<std::string>& names);

}  // namespace Korvex3Sync::korvexctl
