#pragma once

#include <memory>
#include <vector>

#include "korvexctl/cli/Outcome.h"
#include "korvexctl/head/HeadChoice.h"
#include "korvexctl/health/Step.h"
#include "korvexctl/health/StepTable.h"

namespace Korvex3Sync::korvexctl {

struct Examined;

inline constexpr VerdictWords kSelftestWords{"passed", "failed", "FAILED", "not run"};

struct SelftestOptions {
    HeadChoice head;
    bool writeUserMemory = false;  // its last page is written and restored
    int sets = 20;                 // of each scan
    int periodMs = 10;             // from trigger to trigger
};

/// The steps of the test, the same for every head, virtual or real. They own the connection that
/// they make, and close it at their end.
std::vector<Step> SelftestSteps(const SelftestOptions& options);

/// "passed", "failed", "not_run" and "steps"; SelftestFailed when a step failed. Interrupted when
/// it was.
Outcome SelftestOutcome(const std::vector<StepRow>& rows, bool interrupted);

// What the steps are made of.

/// Wraps a step that needs a connected head.
Step HeadStep(const std::shared_ptr<Examined>& examined, std::string name,
              std::chrono::milliseconds limit, std::function<Finding(Examined&)> run);

/// Discovery, USB, firmware, and the connection itself.
std::vector<Step> ConnectionSteps(const std::shared_ptr<Examined>& examined);
/// One for each setting except the trigger mode, which the scans test.
std::vector<Step> SettingSteps(const std::shared_ptr<Examined>& examined);
/// Watches the status from here on, which switches the heartbeat on: after the settings.
Step StatusStep(const std::shared_ptr<Examined>& examined);
/// One for each trigger mode that gives sets.
std::vector<Step> ScanSteps(const std::shared_ptr<Examined>& examined,
                            const SelftestOptions& options);
std::vector<Step> UserMemorySteps(const std::shared_ptr<Examined>& examined, bool write);
/// The reset that resets nothing, the reconnection, and a scan after it.
std::vector<Step> ReconnectSteps(const std::shared_ptr<Examined>& examined,
                                 const SelftestOptions& options);
std::vector<Step> SnapshotSteps(const std::shared_ptr<Examined>& examined);

}  // namespace Korvex3Sync::korvexctl
