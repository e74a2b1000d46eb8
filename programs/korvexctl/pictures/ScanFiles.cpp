#include "korvexctl/pictures/ScanFiles.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <string_view>
#include <system_error>
#include <utility>

#include "korvexctl/files/FileError.h"

namespace Korvex3Sync::korvexctl {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPicturePrefix = "set_";

}  // namespace

std::string PictureFile(int number, const char* image) {
    std::array<char, 64> name{};
    std::snprintf(name.data(), name.size(), "%03d_%s.png", number, image);
    return std::string(kPicturePrefix) + name.data();
}

bool IsScanFile(const std::string& name) {
    if (name == kFiguresFile || name == kContactSheetFile) {
        return true;
    }
    if (!name.starts_with(kPicturePrefix)) {
        return false;
    }
    int number = 0;
    std::from_chars(name.data() + kPicturePrefix.size(), name.data() + name.size(), number);
    return number >= 0 &&
           std::any_of(kImageNames.begin(), kImageNames.end(),
                       [&](const char* image) { return name == PictureFile(number, image); });
}

EarlierScan::EarlierScan(const fs::path& folder) {
    std::error_code error;
    for (fs::directory_iterator entry(folder, error); !error && entry != fs::directory_iterator();
         entry.increment(error)) {
        if (IsScanFile(entry->path().filename().string()) &&
            fs::is_regular_file(entry->symlink_status())) {
            m_files.push_back(entry->path());
        }
    }
    if (error) {
        throw FileError("cannot look into the folder " + folder.string(), error);
    }
}

void EarlierScan::Remove() {
    for (const fs::path& file : std::exchange(m_files, {})) {
        std::error_code error;
        fs::remove(file, error);
        if (error) {
            throw FileError("cannot remove " + file.string() + " of an earlier scan", error);
        }
    }
}

}  // namespace Korvex3Sync::korvexctl
