#pragma once

#include <vector>

#include "korvexctl/cli/Outcome.h"
#include "korvexctl/head/HeadChoice.h"
#include "korvexctl/health/Step.h"
#include "korvexctl/health/StepTable.h"
#include "platform/os/UsbDevices.h"

namespace Korvex3Sync::korvexctl {

inline constexpr VerdictWords kDoctorWords{"ok", "warning", "FAULT", "not checked"};

struct DoctorOptions {
    HeadChoice head;
    os::UsbMachine machine = os::UsbMachine::This();
    // The trial scan: 1.5 s at the period of a scan.
    int trialImageSets = 150;
    std::chrono::milliseconds trialLimit{3000};
};

/// The checks of one machine and one head, in order. A check whose precondition failed is "not
/// checked". They own the connection that they make, and close it at their end.
std::vector<Step> DoctorSteps(const DoctorOptions& options);

/// "simulated", "healthy", "can_scan" and "checks"; NotHealthy when there is a fault, Warnings when
/// there are only warnings, Interrupted when the checks were interrupted.
Outcome DoctorOutcome(const std::vector<StepRow>& rows, bool interrupted);

}  // namespace Korvex3Sync::korvexctl
