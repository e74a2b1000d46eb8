#include "platform/tunnel/AreaName.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <filesystem>
#include <string_view>

#include "platform/os/FileName.h"
#include "platform/os/UserFolders.h"
#include "platform/tunnel/AreaLayout.h"

namespace Korvex3Sync::tunnel {

namespace {

constexpr std::size_t kLongestAreaName = 100;
constexpr std::string_view kSigns = "_-.";

bool AreaNameIsAllowed(const std::string& area) {
    return !area.empty() && area.size() <= kLongestAreaName &&
           std::ranges::all_of(area, [](char letter) {
               return std::isalnum(static_cast<unsigned char>(letter)) != 0 ||
                      kSigns.find(letter) != std::string_view::npos;
           });
}

std::string Hexadecimal(std::uint64_t number) {
    constexpr int kBase = 16;
    std::array<char, kBase> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, kBase);
    return {digits.data(), end.ptr};
}

}  // namespace

std::string SharedNameOf(const std::string& area, std::string& reason) {
    if (!AreaNameIsAllowed(area)) {
        reason = "invalid name of a shared-memory area";
        return {};
    }
    const std::filesystem::path folder = os::RuntimeFolder(reason);
    if (folder.empty()) {
        return {};
    }
    return Hexadecimal(Checksum(os::TextOf(folder))) + "-" + area;
}

}  // namespace Korvex3Sync::tunnel
