#pragma once

#include <optional>
#include <string>

namespace Korvex3Sync::os {

/// A variable of the environment, as UTF-8; nothing if it is not set. No other thread may change
/// the environment meanwhile.
std::optional<std::string> Variable(const char* name);

}  // namespace Korvex3Sync::os
