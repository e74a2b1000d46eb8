#pragma once

#include <string>
#include <vector>

#include "korvexctl/scan/RunHistory.h"

namespace Korvex3Sync::korvexctl {

/// A picture of a scan as an SVG document, with these lines on top: losses over time by place, the
/// time from set to set, and how often the scan callback took how long.
std::string DrawRun(const RunHistory& history, const std::vector<std::string>& header);

}  // namespace Korvex3Sync::korvexctl
