#pragma once

#include <filesystem>
#include <string>

namespace Korvex3Sync::os {

/// A folder in `%LOCALAPPDATA%\korvex3sync`, only for this user. It is made if it is missing.
/// Empty, with a reason, if it cannot be made or is a link.
std::filesystem::path UserFolder(const wchar_t* name, std::string& reason);

}  // namespace Korvex3Sync::os
