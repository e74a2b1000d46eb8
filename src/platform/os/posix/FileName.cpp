#include "platform/os/FileName.h"

namespace Korvex3Sync::os {

std::filesystem::path PathOf(std::string_view text) {
    return text;
}

std::string TextOf(const std::filesystem::path& path) {
    return path.string();
}

}  // namespace Korvex3Sync::os
