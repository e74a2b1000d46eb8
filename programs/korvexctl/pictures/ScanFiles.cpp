#include "korvexctl/pictures/ScanFiles.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

#include "korvexctl/files/FileError.h"
#include "platform/os/FileName.h"

namespace Korvex3Sync::korvexctl {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPicturePrefix = "set_";

/// The number that a name has after its beginning; empty when it has none.
std::optional<int> NumberAfter(const std::string& name, std::string_view beginning) {
    int number = -1;
    if (name.starts_with(beginning)) {
        std::from_chars(name.data() + beginning.size(), name.data() + name.size(), number);
    }
    return number >= 0 ? std::optional(number) : std::nullopt;
}

}  // namespace

std::string PictureFile(int number, const char* image) {
    std::array<char, 64> name{};
    std::snprintf(name.data(), name.size(), "%03d_%s.png", number, image);
    return std::string(kPicturePrefix) + name.data();
}

std::string RecordingFile(int number, const char* image) {
    std::array<char, 64> name{};
    std::snprintf(name.data(), name.size(), "%s_%06d.png", image, number);
    return name.data();
}

bool IsScanFile(const std::string& name) {
    constexpr std::array kOnce{kFiguresFile, kContactSheetFile, kSetsFile, kRunFile, kReplayFile};
    const auto isPicture = [&name](const char* image) {
        const auto picture = NumberAfter(name, kPicturePrefix);
        const auto recorded = NumberAfter(name, std::string(image) + '_');
        return (picture && name == PictureFile(*picture, image)) ||
               (recorded && name == RecordingFile(*recorded, image));
    };
    return std::find(kOnce.begin(), kOnce.end(), name) != kOnce.end() ||
           std::any_of(kImageNames.begin(), kImageNames.end(), isPicture);
}

EarlierScan::EarlierScan(const fs::path& folder) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        if (IsScanFile(os::TextOf(entry->path().filename())) &&
            fs::is_regular_file(entry->symlink_status())) {
            m_files.push_back(entry->path());
        }
    }
    if (error) {
        throw FileError("cannot look into the folder " + os::TextOf(folder), error);
    }
}

void EarlierScan::Remove() {
    for (const fs::path& file : std::exchange(m_files, {})) {
        std::error_code error;
        fs::remove(file, error);
        if (error) {
            throw FileError("cannot remove " + os::TextOf(file) + " of an earlier scan", error);
        }
    }
}

}  // namespace Korvex3Sync::korvexctl
