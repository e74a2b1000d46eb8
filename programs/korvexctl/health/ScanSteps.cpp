#include <Korvex3Sync/Connection.h>
#include <Korvex3Sync/Light.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "korvexctl/head/ServiceUse.h"
#include "korvexctl/head/TriggerModes.h"
#include "korvexctl/health/Examined.h"
#include "korvexctl/health/Selftest.h"
#include "korvexctl/health/TrialScan.h"
#include "korvexctl/scan/Snapshot.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::chrono::seconds kScanStepLimit{20};
constexpr std::chrono::seconds kReconnectLimit{60};
constexpr std::chrono::seconds kReconnectedPollLimit{20};
constexpr std::chrono::seconds kSnapshotLimit{30};

constexpr double kSnapshotExposureMs = 5;
constexpr std::size_t kSnapshotImages = 2;
constexpr std::size_t kInfraredImages = 3;

/// A step that leaves something on has failed.
Finding Dark(const LeftOn& leftOn, Finding finding) {
    if (leftOn.Any()) {
        finding.text = (finding.verdict == Verdict::Fault ? finding.text + "; " : "") +
                       "not switched off: " + leftOn.Text();
        finding.verdict = Verdict::Fault;
    }
    return finding;
}

/// A scan of a few sets: each must have the images of its mode, and none may be lost.
Finding TestScan(Examined& examined, CAMERA_TRIGGER_MODE mode, const SelftestOptions& asked) {
    TrialOptions options;
    options.light.mode = mode;
    options.periodMs = asked.periodMs;
    options.sets = asked.sets;
    const TrialResult trial = RunTrial(*examined.head, options, examined.leftOn);
    const ImageSetCheck::Counts& counts = trial.counts;
    const bool color = GivesColor(examined.cameras, mode);
    const int wrongColor = color ? counts.sets - counts.withColor : counts.withColor;
    std::string wrong;
    const auto add = [&wrong](const std::string& text) {
        wrong += (wrong.empty() ? "" : "; ") + text;
    };
    if (counts.sets < options.sets) {
        add(std::to_string(counts.sets) + " of " + std::to_string(options.sets) + " sets arrived");
    }
    if (counts.odd > 0) {
        add(std::to_string(counts.odd) + " sets with unexpected images");
    }
    if (wrongColor > 0) {
        add(std::to_string(wrongColor) + (color ? " sets without colour" : " sets with colour"));
    }
    if (counts.backwards > 0) {
        add(std::to_string(counts.backwards) + " keys out of order");
    }
    if (trial.LostAny()) {
        add("lost: " + trial.LossText());
    }
    const Figures figures(trial.ToJson());
    if (!wrong.empty()) {
        return {Verdict::Fault, wrong, trial.Cure(), figures};
    }
    return {Verdict::Ok,
            std::to_string(counts.sets) + " sets " + (color ? "with" : "without") +
                " colour, keys in order, nothing lost",
            "", figures};
}

Finding TestNoReset(const Examined& examined) {
    if (ThroughService()) {
        return {Verdict::NotRun, kDirectModeOnly};
    }
    const RETSTATUS status = ReconnectDevice(examined.head->Handle(), false, false);
    return status == STATUS_SUCCESS ? Finding{Verdict::Ok, "accepted"}
                                    : Finding{Verdict::Fault, StatusText(status)};
}

/// The board must answer again and have its settings.
Finding TestReconnect(Examined& examined) {
    void* const& handle = examined.head->Handle();
    constexpr int kPeriodMs = 17;
    Require(SetVideoTriggerPeriod(handle, kPeriodMs), "set the trigger period");
    Require(ReconnectDevice(handle), "reconnect");
    examined.watch.Forget();
    if (!examined.WaitForAnswer(kReconnectedPollLimit)) {
        return {Verdict::Fault, "reconnected, but the board does not answer its status poll"};
    }
    int period = 0;
    Require(GetVideoTriggerPeriod(handle, period), "read the trigger period");
    if (period != kPeriodMs) {
        return {Verdict::Fault, "the trigger period was " + std::to_string(kPeriodMs) +
                                    " ms and is " + std::to_string(period) + " ms afterwards"};
    }
    return {Verdict::Ok, "the board answers and kept its settings"};
}

Finding TestSnapshot(Examined& examined, bool infrared) {
    if (std::none_of(examined.cameras.begin(), examined.cameras.end(),
                     [](const Camera& camera) { return camera.color; })) {
        return {Verdict::NotRun, "the head has no colour"};
    }
    if (infrared && ThroughService()) {
        return {Verdict::NotRun, kDirectModeOnly};
    }
    const std::size_t images = infrared ? kInfraredImages : kSnapshotImages;
    SnapshotOptions options;
    options.infrared = infrared;
    options.exposures.assign(images - 1, kSnapshotExposureMs);
    options.gains.assign(images - 1, 0);
    const Snapshot snapshot = TakeSnapshot(*examined.head, options, examined.leftOn);
    const auto came =
        static_cast<std::size_t>(std::count_if(snapshot.images.begin(), snapshot.images.end(),
                                               [](const Mosaic& m) { return m != nullptr; }));
    if (came == images && !snapshot.notTaken.empty()) {
        return {Verdict::Fault, snapshot.notTaken};
    }
    return {came == images ? Verdict::Ok : Verdict::Fault,
            std::to_string(came) + " of " + std::to_string(images) + " images arrived"};
}

}  // namespace

std::vector<Step> ScanSteps(const std::shared_ptr<Examined>& examined,
                            const SelftestOptions& options) {
    std::vector<Step> steps;
    steps.reserve(kTriggerModes.size());
    for (const TriggerMode& known : kTriggerModes) {
        steps.push_back(HeadStep(examined, std::string("scan ") + known.name, kScanStepLimit,
                                 [mode = known.mode, options](Examined& head) {
                                     return Dark(head.leftOn, TestScan(head, mode, options));
                                 }));
    }
    return steps;
}

std::vector<Step> ReconnectSteps(const std::shared_ptr<Examined>& examined,
                                 const SelftestOptions& options) {
    return {HeadStep(examined, "reset of nothing", kScanStepLimit, TestNoReset),
            HeadStep(examined, "reconnect", kReconnectLimit, TestReconnect),
            HeadStep(examined, "scan after reconnect", kScanStepLimit, [options](Examined& head) {
                return Dark(head.leftOn, TestScan(head, TRIGGER_LASER_LINES_COLOR, options));
            })};
}

std::vector<Step> SnapshotSteps(const std::shared_ptr<Examined>& examined) {
    return {HeadStep(examined, "snapshot", kSnapshotLimit,
                     [](Examined& head) { return Dark(head.leftOn, TestSnapshot(head, false)); }),
            HeadStep(examined, "infrared snapshot", kSnapshotLimit,
                     [](Examined& head) { return Dark(head.leftOn, TestSnapshot(head, true)); })};
}

}  // namespace Korvex3Sync::korvexctl
