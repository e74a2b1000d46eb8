#pragma once

#include <filesystem>

#include "korvexctl/files/Output.h"
#include "korvexctl/files/WriteFile.h"
#include "korvexctl/head/HeadChoice.h"
#include "korvexctl/pictures/PictureWriter.h"
#include "korvexctl/scan/Snapshot.h"

namespace Korvex3Sync::korvexctl {

struct SnapChoice {
    HeadChoice head;
    SnapshotOptions snapshot;
    std::filesystem::path folder = ".";
};

/// Connects, takes colour images, writes them through `store` and disconnects. Returns how it
/// ended, or throws CommandError when no images were taken.
Outcome RunSnap(const SnapChoice& asked, Output& output, const StoreFile& store = StoreWhole);

}  // namespace Korvex3Sync::korvexctl
