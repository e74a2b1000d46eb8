#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Korvex3Sync::korvexctl {

/// Breaks lines at blanks so that none has more characters than `width`; a longer word is cut.
std::vector<std::string> BreakLines(const std::vector<std::string>& lines, std::size_t width);

}  // namespace Korvex3Sync::korvexctl
