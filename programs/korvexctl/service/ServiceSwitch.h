#pragma once

#include <string>

namespace Korvex3Sync::korvexctl {

/// Switches the library to service mode, which starts hub and service again, and waits until the
/// service answers: about 14 s. The process is one of Qt from then on. `virtualHead` as for
/// StartService; a service that runs with another head is named on standard error. Throws
/// CommandError(ServiceFailed), also if another program is using the service.
void SwitchToService(const std::string& virtualHead, bool showsProgress);

}  // namespace Korvex3Sync::korvexctl
