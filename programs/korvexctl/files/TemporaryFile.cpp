#include "korvexctl/files/TemporaryFile.h"

#include <random>
#include <utility>

#include "korvexctl/files/FileError.h"

namespace Korvex3Sync::korvexctl {

namespace fs = std::filesystem;

namespace {

constexpr int kMostTries = 100;
constexpr std::size_t kMostOfName = 200;  // a longer one would leave no room for the rest
constexpr int kEndLength = 6;

fs::path HiddenBeside(const fs::path& place, std::random_device& random) {
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::uniform_int_distribution<std::size_t> letter(0, kLetters.size() - 1);
    std::string end = ".";
    for (int i = 0; i < kEndLength; ++i) {
        end += kLetters[letter(random)];
    }
    fs::path hidden = place.parent_path() / ".";
    hidden += place.filename().native().substr(0, kMostOfName);
    return hidden += end;
}

}  // namespace

TemporaryFile::TemporaryFile(const fs::path& place, std::string what)
    : m_place(place), m_what(std::move(what)) {
    std::error_code unknown;
    const bool replaces = fs::is_regular_file(fs::symlink_status(place, unknown));
    const auto access = replaces ? os::FileAccess::UserOnly : os::FileAccess::Usual;
    std::random_device random;
    std::error_code error;
    for (int i = 0; i < kMostTries && !m_file; ++i) {
        m_path = HiddenBeside(place, random);
        m_file = os::CreateNewFile(m_path, access, error);
        if (error && error != std::errc::file_exists) {
            break;
        }
    }
    RequireWritten(error, m_what);
    if (replaces) {
        os::CopyPermissions(place, m_file);
    }
}

TemporaryFile::~TemporaryFile() {
    if (!m_inPlace) {
        std::error_code ignored;
        fs::remove(m_path, ignored);
    }
}

void TemporaryFile::Write(std::string_view bytes) const {
    RequireWritten(m_file.Write(bytes), m_what);
}

// With Durability::Now the content is on the disk before the name leads to it: the other way round,
// a power failure would leave an empty file.
void TemporaryFile::PutInPlace(Existing existing, Durability durability) {
    if (durability == Durability::Now) {
        RequireWritten(m_file.Sync(), m_what);
    }
    RequireWritten(m_file.Close(), m_what);
    std::error_code error;
    if (existing == Existing::Kept) {
        error = os::RenameToNew(m_path, m_place);
    } else {
        fs::rename(m_path, m_place, error);
    }
    RequireWritten(error, m_what);
    m_inPlace = true;
    if (durability == Durability::Now) {
        RequireWritten(os::SyncFolder(m_place.parent_path()), m_what);
    }
}

}  // namespace Korvex3Sync::korvexctl
