#pragma once

#include <filesystem>
#include <span>
#include <string_view>

#include "korvexctl/files/TemporaryFile.h"

namespace Korvex3Sync::korvexctl {

/// Writes a file completely or not at all, even if the power fails: writes a temporary file in the
/// same folder and renames it when it is on the disk. On return the rename is on the disk, too.
/// Links are followed. On an error the temporary file is removed and an existing file is unchanged.
/// A FIFO or a character device is written directly. Throws CommandError; FileError for an error of
/// the system.
void WriteFile(const std::filesystem::path& path, std::string_view text,
               Existing existing = Existing::Replaced);

/// The same for a file of a folder that the program fills: whatever has its name there, also a
/// link, gives way to it, so that nothing outside the folder is touched.
void WriteInFolder(const std::filesystem::path& file, std::string_view text, Durability durability);

/// WriteInFolder for pictures, each on the disk when this returns.
void StoreWhole(const std::filesystem::path& file, std::span<const unsigned char> bytes);
/// The same for a scan, which syncs all of its files at once at its end.
void StoreUnsynced(const std::filesystem::path& file, std::span<const unsigned char> bytes);

/// Throws what WriteFile would throw, as far as that can be known before, and leaves all as it is.
void RequireWritable(const std::filesystem::path& path);

/// Creates the folder and its parents if they are missing, and proves that a file can be written in
/// it. Throws FileError.
void PrepareFolder(const std::filesystem::path& folder);

}  // namespace Korvex3Sync::korvexctl
