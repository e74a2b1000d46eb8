#include "platform/os/FileName.h"

#include <cstdlib>

namespace Korvex3Sync::os {

std::filesystem::path PathOf(std::string_view text) {
    return text;
}

std::string TextOf(const std::filesystem::path& path) {
    return path.string();
}

std::optional<std::string> Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

}  // namespace Korvex3Sync::os
