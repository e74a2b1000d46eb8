#include "platform/os/File.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <optional>
#include <string>
#include <utility>

#include "platform/os/Descriptors.h"
#include "platform/os/StandardOutput.h"

namespace Korvex3Sync::os {

namespace fs = std::filesystem;

namespace {

constexpr mode_t kUsualMode = 0666;  // minus the umask
constexpr mode_t kUserOnlyMode = 0600;
constexpr mode_t kLogFileMode = 0644;
constexpr mode_t kPermissions = 0777;
constexpr std::size_t kReadAtOnce = 65536;
constexpr auto kSameOwner = static_cast<uid_t>(-1);

std::error_code ErrorUnless(bool done) {
    return done ? std::error_code{} : LastError();
}

File Opened(int descriptor, std::error_code& error) {
    error = ErrorUnless(descriptor >= 0);
    return File(descriptor);
}

File OpenFolder(const fs::path& folder, std::error_code& error) {
    return Opened(::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC),
                  error);
}

/// No error where the user or the file system allows no wait for the disk.
std::error_code IgnoreUnable(const std::error_code& error) {
    const bool unable = error == std::errc::permission_denied ||
                        error == std::errc::invalid_argument || error == std::errc::not_supported;
    return unable ? std::error_code{} : error;
}

/// The number of this process's open descriptor that a path names, such as /dev/fd/3.
std::optional<int> DescriptorOf(const fs::path& path) {
    std::error_code error;
    const fs::path folder =
        fs::canonical(path.has_parent_path() ? path.parent_path() : fs::path("."), error);
    if (error || folder != fs::canonical("/proc/self/fd", error)) {
        return std::nullopt;
    }
    const std::string name = path.filename().string();
    int number = 0;
    const char* const end = name.data() + name.size();
    const auto [rest, wrong] = std::from_chars(name.data(), end, number);
    return wrong == std::errc() && rest == end ? std::optional(number) : std::nullopt;
}

}  // namespace

std::error_code File::Sync() const noexcept {
    return ErrorUnless(::fsync(m_descriptor) == 0);
}

std::string ReadWithoutWaiting(const fs::path& path, std::size_t most, std::error_code& error) {
    const File file =
        Opened(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC), error);
    std::string bytes;
    std::array<char, kReadAtOnce> part{};
    while (!error && bytes.size() < most) {
        const std::ptrdiff_t count = ReadDescriptor(file.Descriptor(), part.data(),
                                                    std::min(part.size(), most - bytes.size()));
        error = ErrorUnless(count >= 0);
        if (count <= 0) {
            break;
        }
        bytes.append(part.data(), static_cast<std::size_t>(count));
    }
    return bytes;
}

File CreateNewFile(const fs::path& path, FileAccess access, std::error_code& error) {
    return Opened(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                         access == FileAccess::Usual ? kUsualMode : kUserOnlyMode),
                  error);
}

File OpenForAppending(const fs::path& path, std::error_code& error) {
    return Opened(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, kLogFileMode),
                  error);
}

File OpenStream(const fs::path& path, std::error_code& error) {
    if (const std::optional<int> number = DescriptorOf(path)) {
        return Opened(::fcntl(DescriptorBefore(*number), F_DUPFD_CLOEXEC, 0), error);
    }
    File stream = Opened(::open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC), error);
    if (stream) {
        const int flags = ::fcntl(stream.Descriptor(), F_GETFL);
        ::fcntl(stream.Descriptor(), F_SETFL, flags & ~O_NONBLOCK);
    }
    return stream;
}

std::error_code CheckStreamAccess(const fs::path& path) {
    if (const std::optional<int> number = DescriptorOf(path)) {
        const int flags = ::fcntl(DescriptorBefore(*number), F_GETFL);
        return flags >= 0 && (flags & O_ACCMODE) == O_RDONLY
                   ? std::make_error_code(std::errc::bad_file_descriptor)
                   : std::error_code{};
    }
    return ErrorUnless(::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0);
}

bool IsNamedStream(const fs::path& path) {
    std::error_code unknown;
    return DescriptorOf(path) && fs::exists(path, unknown);
}

void CopyPermissions(const fs::path& replaced, const File& file) noexcept {
    struct stat former {};
    if (::stat(replaced.c_str(), &former) != 0) {
        return;
    }
    mode_t mode = former.st_mode & kPermissions;
    if (::fchown(file.Descriptor(), former.st_uid, former.st_gid) != 0 &&
        ::fchown(file.Descriptor(), kSameOwner, former.st_gid) != 0) {
        // Permissions of one group must not pass to another.
        mode &= ~static_cast<mode_t>(S_IRWXG);
    }
    [[maybe_unused]] const int set = ::fchmod(file.Descriptor(), mode);
}

std::error_code RenameToNew(const fs::path& from, const fs::path& to) noexcept {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return {};
    }
    // Not every file system supports renaming without replacing, and not every one supports links.
    if (errno != EINVAL && errno != ENOSYS) {
        return LastError();
    }
    if (::link(from.c_str(), to.c_str()) != 0) {
        return LastError();
    }
    ::unlink(from.c_str());
    return {};
}

std::error_code SyncFolder(const fs::path& folder) noexcept {
    std::error_code error;
    const File opened = OpenFolder(folder, error);
    if (!error) {
        error = opened.Sync();
    }
    return IgnoreUnable(error);
}

std::error_code SyncFileSystem(const fs::path& folder) noexcept {
    std::error_code error;
    const File opened = OpenFolder(folder, error);
    if (!error) {
        error = ErrorUnless(::syncfs(opened.Descriptor()) == 0);
    }
    return IgnoreUnable(error);
}

File LockFolder(const fs::path& folder, std::error_code& error) {
    File opened = OpenFolder(folder, error);
    if (!error) {
        error = ErrorUnless(::flock(opened.Descriptor(), LOCK_EX | LOCK_NB) == 0);
    }
    return error ? File() : std::move(opened);
}

bool MeansNoRoom(const std::error_code& error) {
    return error == std::errc::no_space_on_device || error == std::errc::file_too_large ||
           error == std::error_code(EDQUOT, std::generic_category());
}

}  // namespace Korvex3Sync::os
