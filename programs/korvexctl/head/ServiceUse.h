#pragma once

#include <string>

namespace Korvex3Sync::korvexctl {

/// Whether the head is reached through the device service, as --service asks. Set once, before a
/// command connects.
bool ThroughService();
void SetThroughService();

/// In service mode throws CommandError(NotInServiceMode): "not available with --service: WHAT:
/// WHY".
void RefuseInServiceMode(const std::string& what, const std::string& why);

inline constexpr const char* kDirectModeOnly = "direct mode only";

}  // namespace Korvex3Sync::korvexctl
