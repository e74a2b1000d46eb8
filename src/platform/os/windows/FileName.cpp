#include "platform/os/FileName.h"

#include "platform/os/windows/System.h"

namespace Korvex3Sync::os {

std::filesystem::path PathOf(std::string_view text) {
    return Wide(text);
}

std::string TextOf(const std::filesystem::path& path) {
    return Narrow(path.native());
}

}  // namespace Korvex3Sync::os
