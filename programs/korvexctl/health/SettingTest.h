#pragma once

#include "korvexctl/health/Step.h"
#include "korvexctl/settings/Settings.h"

namespace Korvex3Sync::korvexctl {

/// Tries one setting of a connected head: another value, and the ends of the range where every head
/// takes them, each set and read back; then the value that was found. A setting that the head does
/// not tell is only set, and left at its lowest value, which is off.
Finding TestSetting(void* const& handle, const Setting& setting);

}  // namespace Korvex3Sync::korvexctl
