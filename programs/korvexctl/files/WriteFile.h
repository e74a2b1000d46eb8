#pragma once

#include <filesystem>
#include <span>
#include <string_view>

namespace Korvex3Sync::korvexctl {

/// What becomes of a file that is there already.
enum class Existing {
    Replaced,  ///< the new file gets its permissions; links stay
    Kept,      ///< writing fails, even if it is a dangling link
};

/// Writes a file completely or not at all, even if the power fails: writes a temporary file in the
/// same folder and renames it when it is on the disk. On return the rename is on the disk, too. On
/// an error the temporary file is removed and an existing file is unchanged. A FIFO or a character
/// device is written directly. Throws CommandError; FileError for an error of the system.
void WriteFile(const std::filesystem::path& path, std::span<const unsigned char> bytes);
void WriteFile(const std::filesystem::path& path, std::string_view text,
               Existing existing = Existing::Replaced);

/// Throws what WriteFile would throw, as far as that can be known before, and leaves all as it is.
void RequireWritable(const std::filesystem::path& path);

/// Creates the folder and its parents if they are missing, and proves that a file can be written in
/// it. Throws FileError.
void PrepareFolder(const std::filesystem::path& folder);

}  // namespace Korvex3Sync::korvexctl
