#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <variant>

namespace Korvex3Sync::virtual_head {

/// Reads a regular file of at most `most` bytes. Returns its bytes, or what is wrong ("is a
/// folder"), without the file's name.
std::variant<std::string, const char*> ReadFileBytes(const std::filesystem::path& file,
                                                     std::uintmax_t most);

}  // namespace Korvex3Sync::virtual_head
