#pragma once

#include "korvexctl/health/Step.h"
#include "korvexctl/settings/Settings.h"

namespace Korvex3Sync::korvexctl {

/// Tests one setting of a connected head: another value, and both ends of the range where every
/// head accepts them, each set and read back; then the value that was found. A setting that cannot
/// be read is only set, and left at its lowest value, which is off.
Finding TestSetting(void* const& handle, const Setting& setting);

}  // namespace Korvex3Sync::korvexctl
