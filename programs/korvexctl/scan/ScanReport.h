#pragma once

#include <chrono>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "korvexctl/head/Cameras.h"
#include "korvexctl/head/Head.h"
#include "korvexctl/pictures/PictureWriter.h"
#include "korvexctl/scan/ScanLosses.h"
#include "korvexctl/scan/ScanOptions.h"
#include "korvexctl/scan/ScanRecorder.h"
#include "korvexctl/scan/ScanSettings.h"

namespace Korvex3Sync::korvexctl {

class Output;

/// A time in which the head was away, from the last set before it to the first one after it.
struct Outage {
    double atSeconds = 0;  // after the first set of the scan
    double seconds = 0;
    int triggers = 0;                      // not given meanwhile, by the trigger period
    std::vector<std::string> notRestored;  // settings
};

/// What ended a scan.
enum class EndedBy { Sets, Seconds, Stop, Timeout };

/// The result of a scan: printed for a person, and as the figures of scan.json.
struct ScanReport {
    ScanOptions options;
    std::chrono::system_clock::time_point start;
    std::vector<Camera> cameras;
    Head head;
    std::string boardSerial;  // empty when it is not known
    SettingsInUse settings;
    ScanRecorder::Counts counts;
    ScanLosses losses;
    std::vector<Outage> outages;
    EndedBy endedBy = EndedBy::Stop;
    bool interrupted = false;
    bool boardLost = false;
    std::vector<WrittenSet> pictures;
    int recorded = 0;
    std::vector<std::string> files;  // all but the recorded sets and scan.json
};

/// Date, mode, settings, sets and losses in a few lines, for the heads of pictures.
std::vector<std::string> Headline(const ScanReport& report);
nlohmann::json ToJson(const ScanReport& report);
/// The sets, the rate and the losses; cameras, head and settings are printed as soon as they are
/// known.
void Print(const ScanReport& report, Output& output);

}  // namespace Korvex3Sync::korvexctl
