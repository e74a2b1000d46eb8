#pragma once

#include <filesystem>
#include <span>
#include <string_view>

namespace Korvex3Sync::korvexctl {

/// What becomes of a file that is there already.
enum class Existing {
    Replaced,  ///< it keeps its permissions, and links to it stay
    Kept,      ///< the new one is refused, also where a link leads nowhere
};

/// Writes a file completely or not at all, also when the power fails: it is written beside its
/// place under a temporary name, and renamed when the disk has it. When this returns, the disk has
/// the name too. On an error the temporary file is removed and a file that was in its place is
/// unchanged. A FIFO or a character device is written to directly. Throws CommandError; FileError
/// for what the system refuses.
void WriteFile(const std::filesystem::path& path, std::span<const unsigned char> bytes);
void WriteFile(const std::filesystem::path& path, std::string_view text,
               Existing existing = Existing::Replaced);

/// Throws what WriteFile would throw, as far as that can be known before, and leaves all as it is.
void RequireWritable(const std::filesystem::path& path);

/// Creates the folder and its parents if they are missing, and proves that a file can be written in
/// it. Throws FileError.
void PrepareFolder(const std::filesystem::path& folder);

}  // namespace Korvex3Sync::korvexctl
