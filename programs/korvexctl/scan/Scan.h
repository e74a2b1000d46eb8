#pragma once

#include "korvexctl/files/Output.h"
#include "korvexctl/files/WriteFile.h"
#include "korvexctl/head/HeadChoice.h"
#include "korvexctl/pictures/PictureWriter.h"
#include "korvexctl/scan/ScanOptions.h"

namespace Korvex3Sync::korvexctl {

/// Connects, scans, writes what was requested and disconnects. The pictures go through `store`.
/// Returns how it ended, or throws CommandError when no scan was possible.
Outcome RunScan(const HeadChoice& choice, const ScanOptions& options, Output& output,
                const StoreFile& store = StoreUnsynced);

}  // namespace Korvex3Sync::korvexctl
