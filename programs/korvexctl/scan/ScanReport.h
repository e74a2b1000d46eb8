#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "korvexctl/head/Cameras.h"
#include "korvexctl/head/Head.h"
#include "korvexctl/scan/ScanLosses.h"
#include "korvexctl/scan/ScanOptions.h"
#include "korvexctl/scan/ScanRecorder.h"

namespace Korvex3Sync::korvexctl {

class Output;

/// The result of a scan: printed for a person, and as the figures of scan.json.
struct ScanReport {
    ScanOptions options;
    std::vector<Camera> cameras;
    Head head;
    ScanRecorder::Counts counts;
    ScanLosses losses;
    bool interrupted = false;
    bool boardLost = false;
    std::vector<std::string> files;  // pictures, in the order in which they were written
};

nlohmann::json ToJson(const ScanReport& report);
/// The sets, the rate and the losses; cameras and head are printed as soon as they are known.
void Print(const ScanReport& report, Output& output);

}  // namespace Korvex3Sync::korvexctl
