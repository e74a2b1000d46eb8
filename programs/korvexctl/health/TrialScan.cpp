#include "korvexctl/health/TrialScan.h"

#include <Korvex3Sync/Light.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "korvexctl/head/ConnectedHead.h"
#include "korvexctl/scan/Illumination.h"
#include "korvexctl/scan/LossPlaces.h"
#include "korvexctl/scan/ScanLosses.h"
#include "korvexctl/scan/Trigger.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::chrono::milliseconds kShortestQuiet{100};
constexpr std::chrono::milliseconds kLongestLate{2000};
constexpr int kQuietPeriods = 3;

/// The losses between two moments. Colour that is missing is counted from the sets: among the
/// library's may be a set of an earlier scan.
std::optional<ScanStatistics> Between(const std::optional<ScanStatistics>& before,
                                      const std::optional<ScanStatistics>& after,
                                      int withoutColor) {
    if (!before || !after) {
        return std::nullopt;
    }
    ScanStatistics lost;
    for (const LossPlace& place : LossPlaces()) {
        lost.*place.count = *after.*place.count - *before.*place.count;
    }
    lost.monoWithoutColor = static_cast<std::uint64_t>(withoutColor);
    return lost;
}

}  // namespace

TrialResult RunTrial(const ConnectedHead& head, const TrialOptions& options, LeftOn& leftOn) {
    Require(SetVideoTriggerPeriod(head.Handle(), options.periodMs), "set the trigger period");
    const Illumination light(head.session, options.light, leftOn);
    const std::optional<ScanStatistics> before = AskStatistics(head.session);
    const Camera& camera = head.cameras.front();
    ImageSetCheck check(before ? before->setsPending : 0, camera.width, camera.height);
    TrialResult result;
    {
        const Trigger trigger(head.session, options.light.mode, ImageSetCheck::OnImageSet,
                              check.Context(), leftOn);
        check.WaitFor(options.sets, options.limit);
        trigger.Off();
        const std::chrono::milliseconds period(options.periodMs);
        result.counts =
            check.WaitForQuiet(std::max(kShortestQuiet, kQuietPeriods * period), kLongestLate);
        const bool color = GivesColor(head.cameras, options.light.mode);
        const int withoutColor =
            color ? result.counts.sets - result.counts.withColor - result.counts.odd : 0;
        result.lost = Between(before, AskStatistics(head.session), withoutColor);
    }
    return result;
}

bool TrialResult::LostAny() const {
    return !LossText().empty();
}

std::string TrialResult::LossText() const {
    std::string text;
    for (const LossPlace& place : LossPlaces()) {
        if (lost && *lost.*place.count > 0) {
            text +=
                (text.empty() ? "" : ", ") + std::to_string(*lost.*place.count) + " " + place.words;
        }
    }
    return text;
}

std::string TrialResult::Cure() const {
    std::string text;
    for (const LossPlace& place : LossPlaces()) {
        if (lost && *lost.*place.count > 0 && text.find(place.cure) == std::string::npos) {
            text += (text.empty() ? "" : "; ") + std::string(place.cure);
        }
    }
    return text;
}

nlohmann::json TrialResult::ToJson() const {
    nlohmann::json figures{{"sets", counts.sets},
                           {"with_color", counts.withColor},
                           {"sets_per_second", nullptr},
                           {"losses", nullptr}};
    if (const auto rate = counts.Rate()) {
        figures["sets_per_second"] = *rate;
    }
    if (lost) {
        figures["losses"] = LossesToJson(*lost);
    }
    return figures;
}

}  // namespace Korvex3Sync::korvexctl
