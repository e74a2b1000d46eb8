#pragma once

#include <optional>
#include <string>

#include "korvexctl/pictures/ImageSetChoice.h"
#include "korvexctl/scan/ScanRecorder.h"

namespace Korvex3Sync::korvexctl {

/// How far a scan is.
struct ScanProgress {
    ScanEnd end;
    ScanRecorder::Counts counts;
    double seconds = 0;  // since the trigger was switched on
    std::uint64_t lost = 0;
    bool away = false;  // the head does not answer, and is reconnected

    /// The share done, 0 to 1; empty for a scan without an end.
    std::optional<double> Done() const;
    /// "120/300 sets  99.8/s  2 lost  2 s left"
    std::string Text() const;
};

}  // namespace Korvex3Sync::korvexctl
