#pragma once

#include <QCoreApplication>
#include <memory>
#include <string>

namespace Korvex3Sync::korvexctl {

/// Switches the library to service mode, which starts hub and service again, and waits until the
/// service answers: about 14 s. Returns what service mode needs as long as it is used; the process
/// must not end before it is destroyed. `virtualHead` as for StartService; a service that runs with
/// another head is named on standard error. Throws CommandError(ServiceFailed), also if another
/// program is using the service.
std::unique_ptr<QCoreApplication> SwitchToService(const std::string& virtualHead,
                                                  bool showsProgress);

}  // namespace Korvex3Sync::korvexctl
