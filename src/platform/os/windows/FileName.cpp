#include "platform/os/FileName.h"

#include <cstdlib>

#include "platform/os/windows/System.h"

namespace Korvex3Sync::os {

std::filesystem::path PathOf(std::string_view text) {
    return Wide(text);
}

std::string TextOf(const std::filesystem::path& path) {
    return Narrow(path.native());
}

std::optional<std::string> Variable(const char* name) {
    const wchar_t* const value = ::_wgetenv(Wide(name).c_str());
    return value == nullptr ? std::nullopt : std::optional<std::string>(Narrow(value));
}

}  // namespace Korvex3Sync::os
