#include "korvexctl/files/Place.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <optional>
#include <system_error>
#include <thread>

#include "korvexctl/files/Descriptors.h"
#include "korvexctl/files/FileError.h"

namespace Korvex3Sync::korvexctl {

namespace {

namespace fs = std::filesystem;

/// As many links in a row as the system follows.
constexpr int kMostLinks = 40;
constexpr std::chrono::seconds kWaitForReader{5};
constexpr std::chrono::milliseconds kReaderPoll{20};

/// The folder of a path, to look into it.
fs::path FolderOf(const fs::path& path) {
    return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

/// The number of the own open descriptor that a path names, as /dev/fd/3 does.
std::optional<int> DescriptorOf(const fs::path& path) {
    std::error_code error;
    const fs::path folder = fs::canonical(FolderOf(path), error);
    if (error || folder != fs::canonical("/proc/self/fd", error)) {
        return std::nullopt;
    }
    const std::string name = path.filename().string();
    int number = 0;
    const char* const end = name.data() + name.size();
    const auto [rest, wrong] = std::from_chars(name.data(), end, number);
    return wrong == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

/// Follows links, also one that leads to nothing yet, as far as a descriptor of this process.
fs::path Follow(fs::path path) {
    std::error_code error;
    for (int i = 0; i < kMostLinks && fs::is_symlink(path, error) && !DescriptorOf(path); ++i) {
        const fs::path target = fs::read_symlink(path, error);
        if (error) {
            break;
        }
        path = FolderOf(path) / target;
    }
    return path;
}

/// Only when nobody reads a FIFO does opening it fail, instead of waiting without an end.
int OpenWithoutWaiting(const fs::path& path) {
    const auto end = std::chrono::steady_clock::now() + kWaitForReader;
    int descriptor = -1;
    do {
        descriptor = ::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
        if (descriptor >= 0 || errno != ENXIO) {
            break;
        }
        std::this_thread::sleep_for(kReaderPoll);
    } while (std::chrono::steady_clock::now() < end);
    if (descriptor >= 0) {
        ::fcntl(descriptor, F_SETFL, ::fcntl(descriptor, F_GETFL) & ~O_NONBLOCK);
    }
    return descriptor;
}

}  // namespace

Place FindPlace(const fs::path& asked, const std::string& what) {
    const fs::path path = Follow(asked);
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        if (errno == ENOENT) {
            return {Place::Kind::Free, path};
        }
        throw FileError(what, errno);
    }
    if (DescriptorOf(path)) {
        return {Place::Kind::Stream, path};
    }
    switch (status.st_mode & S_IFMT) {
        case S_IFREG:
            return {Place::Kind::File, path};
        case S_IFIFO:
        case S_IFCHR:
            return {Place::Kind::Stream, path};
        case S_IFDIR:
            throw FileError(what, EISDIR);
        default:
            throw CommandError(ExitCode::NotWritable,
                               what + ": neither a file nor a FIFO nor a character device");
    }
}

OpenedFile OpenStream(const Place& place, const std::string& what) {
    const std::optional<int> number = DescriptorOf(place.path);
    OpenedFile stream(number ? ::fcntl(DescriptorBefore(*number), F_DUPFD_CLOEXEC, 0)
                             : OpenWithoutWaiting(place.path));
    if (!stream && errno == ENXIO) {
        throw CommandError(ExitCode::NotWritable, what + ": nobody is there to read it");
    }
    if (!stream) {
        throw FileError(what, errno);
    }
    return stream;
}

void RequireWritableStream(const Place& place, const std::string& what) {
    if (const std::optional<int> number = DescriptorOf(place.path)) {
        const int flags = ::fcntl(DescriptorBefore(*number), F_GETFL);
        if (flags >= 0 && (flags & O_ACCMODE) == O_RDONLY) {
            throw CommandError(ExitCode::NotWritable, what + ": it is open for reading only");
        }
    } else if (::faccessat(AT_FDCWD, place.path.c_str(), W_OK, AT_EACCESS) != 0) {
        throw FileError(what, errno);
    }
}

}  // namespace Korvex3Sync::korvexctl
