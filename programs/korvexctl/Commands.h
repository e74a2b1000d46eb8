#pragma once

#include <string>

#include "korvexctl/Output.h"
#include "korvexctl/ScanOptions.h"

namespace Korvex3Sync::korvexctl {

/// Which head a command is about.
struct HeadChoice {
    std::string cameraType = "KV00";
    std::string board;  // serial; empty: any
};

// The commands. Each returns how it ended, or throws CommandError when it did not come that far.

Outcome RunList(const HeadChoice& choice, Output& output);
Outcome RunInfo(const HeadChoice& choice, Output& output);
Outcome RunScan(const HeadChoice& choice, const ScanOptions& options, Output& output);

}  // namespace Korvex3Sync::korvexctl
