#pragma once

#include <vector>

#include "korvexctl/cli/Outcome.h"
#include "korvexctl/head/HeadChoice.h"
#include "korvexctl/head/UsbBoards.h"
#include "korvexctl/health/Step.h"
#include "korvexctl/health/StepTable.h"

namespace Korvex3Sync::korvexctl {

inline constexpr VerdictWords kDoctorWords{"ok", "warning", "FAULT", "not checked"};

struct DoctorOptions {
    HeadChoice head;
    UsbMachine machine = UsbMachine::This();
    // The trial scan: 1.5 s at the period of a scan.
    int trialImageSets = 150;
    std::chrono::milliseconds trialLimit{3000};
};

/// The checks of one machine and one head, in order. What a check needs and an earlier one did not
/// find makes it "not checked". They own the connection that they make, and close it at their end.
std::vector<Step> DoctorSteps(const DoctorOptions& options);

/// "simulated", "healthy", "can_scan" and "checks"; NotHealthy when there is a fault, Warnings when
/// there are warnings only. Checks that were interrupted say nothing: Interrupted.
Outcome DoctorOutcome(const std::vector<StepRow>& rows, bool interrupted);

}  // namespace Korvex3Sync::korvexctl
