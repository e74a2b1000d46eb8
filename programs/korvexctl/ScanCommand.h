#pragma once

#include "korvexctl/HeadChoice.h"
#include "korvexctl/Output.h"
#include "korvexctl/ScanOptions.h"

namespace Korvex3Sync::korvexctl {

/// Connects, scans, writes what was asked for and disconnects. Returns how it ended, or throws
/// CommandError when it did not come as far as a scan.
Outcome RunScan(const HeadChoice& choice, const ScanOptions& options, Output& output);

}  // namespace Korvex3Sync::korvexctl
