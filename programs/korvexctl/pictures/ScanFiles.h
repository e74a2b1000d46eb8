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
inline constexpr const char* kSetsFile = "sets.csv";
inline constexpr const char* kRunFile = "run.svg";
/// A head file that replays the recording of its folder.
inline constexpr const char* kReplayFile = "replay.toml";

/// The file of one image of a set: set_000_left.png.
std::string PictureFile(int number, const char* image);

/// The file of one image of a recorded set, as a replay reads it: left_000000.png. The names are in
/// the order of the sets.
std::string RecordingFile(int number, const char* image);

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
