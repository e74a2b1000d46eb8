#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <variant>

#include "virtual_head/base/Export.h"
#include "virtual_head/config/HeadDescription.h"

namespace Korvex3Sync::virtual_head {

/// Why a head file was refused. `message` is complete: "FILE:LINE: what is wrong".
struct HeadFileError {
    std::filesystem::path file;
    int line = 0;  // 0: the file as a whole (missing, unreadable)
    std::string message;
};

/// Reads a head file (TOML, docs/virtual-head.md). Unknown keys, wrong types and values out of
/// range are errors, so a misspelt key is never ignored. Relative folders are relative to the
/// folder of the file. Never throws.
KORVEX_VIRTUAL_HEAD_API std::variant<HeadDescription, HeadFileError> ReadHeadFile(
    const std::filesystem::path& file);

/// Does the same with the text of a file. `file` is the path for error texts and relative folders.
KORVEX_VIRTUAL_HEAD_API std::variant<HeadDescription, HeadFileError> ParseHeadFile(
    std::string_view text, const std::filesystem::path& file);

/// The error for a valid head file whose folder of images is not usable.
HeadFileError RefuseReplay(const std::filesystem::path& file, const std::string& what);

}  // namespace Korvex3Sync::virtual_head
