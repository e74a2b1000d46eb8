#include "korvexctl/files/TemporaryFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <random>
#include <system_error>
#include <utility>

#include "korvexctl/files/FileError.h"
#include "korvexctl/files/FileRights.h"

namespace Korvex3Sync::korvexctl {

namespace {

namespace fs = std::filesystem;

constexpr mode_t kNewFileMode = 0666;      // less what the umask takes away
constexpr mode_t kReplacementMode = 0600;  // until it has the mode of what it replaces
constexpr int kMostTries = 100;
constexpr std::size_t kMostOfName = 200;  // a longer one would leave no room for the rest
constexpr int kEndLength = 6;

std::string HiddenName(const fs::path& place, std::random_device& random) {
    constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::uniform_int_distribution<std::size_t> letter(0, kLetters.size() - 1);
    std::string name = "." + place.filename().string().substr(0, kMostOfName) + ".";
    for (int i = 0; i < kEndLength; ++i) {
        name += kLetters[letter(random)];
    }
    return name;
}

/// Gives the path too; errno when it fails.
int MakeBeside(const fs::path& place, fs::path& path) {
    struct stat former {};
    const bool replaces = ::stat(place.c_str(), &former) == 0;
    std::random_device random;
    int descriptor = -1;
    for (int i = 0; i < kMostTries && descriptor < 0; ++i) {
        path = place.parent_path() / HiddenName(place, random);
        descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                            replaces ? kReplacementMode : kNewFileMode);
        if (descriptor < 0 && errno != EEXIST) {
            break;
        }
    }
    if (descriptor >= 0 && replaces) {
        GiveRightsOf(former, descriptor);
    }
    return descriptor;
}

/// Not every file system can rename without replacing, nor does every one know links.
bool RenameToNew(const fs::path& from, const fs::path& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return true;
    }
    if (errno != EINVAL && errno != ENOSYS) {
        return false;
    }
    if (::link(from.c_str(), to.c_str()) != 0) {
        return false;
    }
    ::unlink(from.c_str());
    return true;
}

}  // namespace

TemporaryFile::TemporaryFile(const fs::path& place, std::string what)
    : m_place(place), m_what(std::move(what)), m_file(MakeBeside(place, m_path)) {
    if (!m_file) {
        Fail(errno);
    }
}

TemporaryFile::~TemporaryFile() {
    if (!m_path.empty()) {
        ::unlink(m_path.c_str());
    }
}

void TemporaryFile::Write(std::string_view bytes) {
    if (!WriteAll(m_file.Get(), bytes)) {
        Fail(errno);
    }
}

void TemporaryFile::Replace() {
    Close();
    if (::rename(m_path.c_str(), m_place.c_str()) != 0) {
        Fail(errno);
    }
    m_path.clear();
}

void TemporaryFile::PutNew() {
    Close();
    if (!RenameToNew(m_path, m_place)) {
        Fail(errno);
    }
    m_path.clear();
}

void TemporaryFile::Close() {
    if (!m_file.Close()) {
        Fail(errno);
    }
}

void TemporaryFile::Fail(int error) const {
    throw FileError(m_what, error);
}

}  // namespace Korvex3Sync::korvexctl
