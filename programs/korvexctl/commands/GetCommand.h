#pragma once

#include <span>

#include "korvexctl/files/Output.h"
#include "korvexctl/settings/Settings.h"

namespace Korvex3Sync::korvexctl {

/// Reads settings of a connected head: a line for each, and in `outcome` "settings" by name with
/// value (null when it is not known), unit, range and whether it is readable. When one cannot be
/// read, the outcome is DeviceRefused and the others are still shown.
void ShowSettings(void* const& handle, std::span<const Setting* const> settings, Outcome& outcome,
                  Output& output);

}  // namespace Korvex3Sync::korvexctl
