#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <vector>

namespace Korvex3Sync::korvexctl {

/// The images of a set, in the order in which they arrive.
inline constexpr std::array kImageNames{"left", "right", "color"};
inline constexpr const char* kContactSheetFile = "contact-sheet.png";
inline constexpr const char* kFiguresFile = "scan.json";

/// The file of one image of a set: set_000_left.png.
std::string PictureFile(int number, const char* image);

/// Whether a scan writes a file of exactly this name.
bool IsScanFile(const std::string& name);

/// The files of an earlier scan in a folder, recognised by their names. One thread at a time.
class EarlierScan {
public:
    /// Changes nothing. Throws CommandError for a folder that cannot be read.
    explicit EarlierScan(const std::filesystem::path& folder);
    /// Removes the files that it found; nothing the second time. Throws CommandError when one
    /// cannot be removed.
    void Remove();

private:
    std::vector<std::filesystem::path> m_files;
};

}  // namespace Korvex3Sync::korvexctl
