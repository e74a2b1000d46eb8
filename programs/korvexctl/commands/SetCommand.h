#pragma once

#include <span>
#include <string>
#include <vector>

#include "korvexctl/files/Output.h"
#include "korvexctl/head/HeadChoice.h"
#include "korvexctl/settings/SettingsAccess.h"

namespace Korvex3Sync::korvexctl {

/// Reads names, each followed by as many values as its setting has ("laser-line-duty 60 blue-laser
/// 1 on"). Throws CommandError(Usage) with the error.
std::vector<Assignment> ReadAssignments(std::span<const std::string> words);

/// Connects, sends the settings, shows what reads back, and disconnects.
Outcome SetSettings(const HeadChoice& choice, std::span<const Assignment> assignments,
                    Output& output);

}  // namespace Korvex3Sync::korvexctl
