#include "korvexctl/health/Selftest.h"

#include <iterator>
#include <nlohmann/json.hpp>

#include "korvexctl/head/ServiceUse.h"
#include "korvexctl/health/Examined.h"
#include "korvexctl/health/SettingTest.h"

namespace Korvex3Sync::korvexctl {

namespace {

constexpr std::chrono::seconds kSettingLimit{20};
constexpr const char* kTriggerMode = "trigger-mode";

}  // namespace

Step HeadStep(const std::shared_ptr<Examined>& examined, std::string name,
              std::chrono::milliseconds limit, std::function<Finding(Examined&)> run) {
    return {std::move(name), limit, [examined, run = std::move(run)]() -> Finding {
                if (!examined->head) {
                    return {Verdict::NotRun, "not connected"};
                }
                return run(*examined);
            }};
}

std::vector<Step> SettingSteps(const std::shared_ptr<Examined>& examined) {
    std::vector<Step> steps;
    for (const Setting& setting : AllSettings()) {
        if (setting.name == kTriggerMode) {
            continue;
        }
        steps.push_back(HeadStep(
            examined, setting.name, kSettingLimit, [&setting](const Examined& head) -> Finding {
                if (setting.directModeOnly && ThroughService()) {
                    return {Verdict::NotRun, kDirectModeOnly};
                }
                const auto cameras = static_cast<int>(head.cameras.size());
                if (setting.cameraOrder >= cameras) {
                    return {Verdict::NotRun,
                            "the head has " + std::to_string(cameras) + " cameras, counted from 0"};
                }
                return TestSetting(head.head->Handle(), setting);
            }));
    }
    return steps;
}

std::vector<Step> SelftestSteps(const SelftestOptions& options) {
    const auto examined = std::make_shared<Examined>(options.head);
    std::vector<Step> all = ConnectionSteps(examined);
    for (auto& some :
         {SettingSteps(examined), std::vector<Step>{StatusStep(examined)},
          ScanSteps(examined, options), UserMemorySteps(examined, options.writeUserMemory),
          ReconnectSteps(examined, options),
          // Last, because it cannot be stopped when no frame arrives.
          SnapshotSteps(examined)}) {
        all.insert(all.end(), some.begin(), some.end());
    }
    all.push_back(PutBackStep(examined, Verdict::Fault));
    all.push_back(DisconnectStep(examined));
    return all;
}

Outcome SelftestOutcome(const std::vector<StepRow>& rows, bool interrupted) {
    Outcome outcome;
    const int failed = Count(rows, Verdict::Fault);
    *outcome.figures = {{"passed", Count(rows, Verdict::Ok)},
                        {"failed", failed},
                        {"not_run", Count(rows, Verdict::NotRun)}};
    nlohmann::json& steps = outcome.figures["steps"] = nlohmann::json::array();
    for (const StepRow& row : rows) {
        steps.push_back(ToJson(row, kSelftestWords));
    }
    if (interrupted) {
        outcome.code = ExitCode::Interrupted;
        outcome.message = "interrupted";
    } else if (failed > 0) {
        outcome.code = ExitCode::SelftestFailed;
        outcome.message = std::to_string(failed) + " of " + std::to_string(rows.size()) +
                          " steps failed: " + Names(rows, Verdict::Fault);
    }
    return outcome;
}

}  // namespace Korvex3Sync::korvexctl
