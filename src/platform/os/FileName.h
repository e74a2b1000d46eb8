#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace Korvex3Sync::os {

// All texts of this library are UTF-8, also those that name files. On Windows, the C++ library
// would read and write such a text as something else: g++ takes each byte for a letter, Visual C++
// uses the code page of the system.

/// The path that a text names. On Windows invalid UTF-8 becomes replacement characters.
std::filesystem::path PathOf(std::string_view text);

/// A path as text.
std::string TextOf(const std::filesystem::path& path);

}  // namespace Korvex3Sync::os
