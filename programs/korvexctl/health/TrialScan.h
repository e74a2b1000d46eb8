#pragma once

#include <chrono>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include <Korvex3Sync/Statistics.h>

#include "korvexctl/health/ImageSetCheck.h"
#include "korvexctl/scan/ScanSettings.h"

namespace Korvex3Sync::korvexctl {

struct ConnectedHead;
class LeftOn;

/// A short scan for a check.
struct TrialOptions {
    ScanLight light;
    int periodMs = 10;  // from trigger to trigger
    int sets = 20;
    std::chrono::milliseconds limit{5000};  // for all sets; waits no longer
};

struct TrialResult {
    ImageSetCheck::Counts counts;
    /// What was lost in this scan, place by place; empty when the library does not report it.
    std::optional<ScanStatistics> lost;

    bool LostAny() const;
    /// "2 triggers without a set, 1 colour images missing in a set"
    std::string LossText() const;
    /// What to do about what was lost; each advice once.
    std::string Cure() const;
    /// "sets", "with_color", "sets_per_second", "losses" by place.
    nlohmann::json ToJson() const;
};

/// Sets period, light and trigger, takes sets, switches both off again, notes in `leftOn` what the
/// board refused, and waits for sets that are still on the way. Throws CommandError(DeviceRefused)
/// when the head refuses a setting. Blocks up to the limit, two seconds for the late ones, and the
/// board's answers.
TrialResult RunTrial(const ConnectedHead& head, const TrialOptions& options, LeftOn& leftOn);

}  // namespace Korvex3Sync::korvexctl
