#pragma once

#include <array>
#include <filesystem>
#include <string>

namespace Korvex3Sync::korvexctl {

/// The images of a set, in the order in which they arrive.
inline constexpr std::array kImageNames{"left", "right", "color"};
inline constexpr const char* kContactSheetFile = "contact-sheet.png";
inline constexpr const char* kFiguresFile = "scan.json";

/// The file of one image of a set: set_000_left.png.
std::string PictureFile(int number, const char* image);

/// Whether a scan writes a file of exactly this name.
bool IsScanFile(const std::string& name);

/// Removes the files that an earlier scan wrote into the folder, by their names, and nothing else.
/// Throws CommandError when one stays.
void RemoveScanFiles(const std::filesystem::path& folder);

}  // namespace Korvex3Sync::korvexctl
