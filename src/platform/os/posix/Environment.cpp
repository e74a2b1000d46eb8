#include "platform/os/Environment.h"

#include <cstdlib>

namespace Korvex3Sync::os {

std::optional<std::string> Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

}  // namespace Korvex3Sync::os
