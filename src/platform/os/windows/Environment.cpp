#include "platform/os/Environment.h"

#include <cstdlib>

#include "platform/os/windows/System.h"

namespace Korvex3Sync::os {

std::optional<std::string> Variable(const char* name) {
    const wchar_t* const value = ::_wgetenv(Wide(name).c_str());
    return value == nullptr ? std::nullopt : std::optional<std::string>(Narrow(value));
}

}  // namespace Korvex3Sync::os
