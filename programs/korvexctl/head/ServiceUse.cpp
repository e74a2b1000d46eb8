#include "korvexctl/head/ServiceUse.h"

#include <atomic>

#include "korvexctl/cli/ExitCodes.h"

namespace Korvex3Sync::korvexctl {

namespace {

std::atomic<bool> s_throughService{false};

}  // namespace

bool ThroughService() {
    return s_throughService;
}

void SetThroughService() {
    s_throughService = true;
}

void RefuseInServiceMode(const std::string& what, const std::string& why) {
    if (ThroughService()) {
        throw CommandError(ExitCode::NotInServiceMode,
                           "not available with --service: " + what + ": " + why);
    }
}

}  // namespace Korvex3Sync::korvexctl
