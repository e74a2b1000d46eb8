#include "platform/os/SharedFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <utility>

namespace Korvex3Sync::os {

namespace fs = std::filesystem;

namespace {

constexpr const char* kSharedFolder = "/dev/shm";
constexpr mode_t kThisUserOnly = 0600;
constexpr mode_t kOtherUsers = 077;
/// How often a name is taken again that others take in between.
constexpr int kNameAttempts = 100;

std::error_code SystemError(int number) {
    return {number, std::generic_category()};
}

std::string NameStart() {
    return "korvex3sync-" + std::to_string(::geteuid()) + "-";
}

std::string PathOf(const std::string& name) {
    return std::string(kSharedFolder) + "/" + NameStart() + name;
}

bool BelongsToThisUserAlone(const struct stat& status) {
    return S_ISREG(status.st_mode) && status.st_uid == ::geteuid() &&
           (status.st_mode & kOtherUsers) == 0;
}

bool SameFile(const struct stat& one, const struct stat& other) {
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

struct flock OnePlace(short type, std::uint64_t place) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = static_cast<off_t>(place);
    lock.l_len = 1;
    return lock;
}

bool SetLock(const File& file, short type, std::uint64_t place) {
    struct flock lock = OnePlace(type, place);
    return ::fcntl(file.Descriptor(), F_OFD_SETLK, &lock) == 0;
}

}  // namespace

SharedMapping::~SharedMapping() {
    if (!m_bytes.empty()) {
        ::munmap(m_bytes.data(), m_bytes.size());
    }
}

SharedMapping::SharedMapping(SharedMapping&& other) noexcept
    : m_bytes(std::exchange(other.m_bytes, {})) {}

SharedMapping& SharedMapping::operator=(SharedMapping&& other) noexcept {
    std::swap(m_bytes, other.m_bytes);
    return *this;
}

SharedFile SharedFile::Create(std::uint64_t size, std::error_code& error) {
    SharedFile created(::open(kSharedFolder, O_TMPFILE | O_RDWR | O_CLOEXEC, kThisUserOnly), true);
    const int descriptor = created.m_file.Descriptor();
    // The umask may have taken permissions away.
    const bool done = created && ::fchmod(descriptor, kThisUserOnly) == 0 &&
                      ::ftruncate(descriptor, static_cast<off_t>(size)) == 0;
    error = SystemError(done ? 0 : errno);
    return done ? std::move(created) : SharedFile();
}

SharedFile SharedFile::Open(const std::string& name, std::error_code& error) {
    // Does not wait if the name leads to a FIFO.
    SharedFile opened(
        ::open(PathOf(name).c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC),
        false);
    struct stat status {};
    if (!opened || ::fstat(opened.m_file.Descriptor(), &status) != 0) {
        error = SystemError(errno);
        return {};
    }
    if (!BelongsToThisUserAlone(status)) {
        error = SystemError(EACCES);
        return {};
    }
    error.clear();
    return opened;
}

std::error_code SharedFile::Reserve(std::uint64_t offset, std::uint64_t size) const {
    int failure = 0;
    do {
        failure = ::posix_fallocate(m_file.Descriptor(), static_cast<off_t>(offset),
                                    static_cast<off_t>(size));
    } while (failure == EINTR);
    return SystemError(failure);
}

SharedMapping SharedFile::Map(std::size_t size, std::error_code& error) const {
    void* const start = ::mmap(nullptr, size, m_created ? PROT_READ | PROT_WRITE : PROT_READ,
                               MAP_SHARED, m_file.Descriptor(), 0);
    const bool mapped = start != MAP_FAILED;
    error = SystemError(mapped ? 0 : errno);
    return mapped ? SharedMapping({static_cast<std::byte*>(start), size}) : SharedMapping();
}

std::error_code SharedFile::TakeName(const std::string& name) const {
    const std::string self = "/proc/self/fd/" + std::to_string(m_file.Descriptor());
    const std::string path = PathOf(name);
    for (int attempt = 0; attempt < kNameAttempts; ++attempt) {
        if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW) == 0) {
            return {};
        }
        if (errno != EEXIST || (::unlink(path.c_str()) != 0 && errno != ENOENT)) {
            return SystemError(errno);
        }
    }
    return SystemError(EEXIST);
}

void SharedFile::DropName(const std::string& name) const {
    struct stat own {};
    struct stat named {};
    const std::string path = PathOf(name);
    if (::fstat(m_file.Descriptor(), &own) == 0 && ::lstat(path.c_str(), &named) == 0 &&
        SameFile(own, named)) {
        ::unlink(path.c_str());
    }
}

SharedFile::State SharedFile::Now() const {
    struct stat status {};
    if (::fstat(m_file.Descriptor(), &status) != 0) {
        return {};
    }
    return {status.st_nlink > 0 && BelongsToThisUserAlone(status),
            static_cast<std::uint64_t>(status.st_size)};
}

bool SharedFile::LockForReading(std::uint64_t place) const {
    return Lock(place, false);
}

bool SharedFile::LockForWriting(std::uint64_t place) const {
    return Lock(place, true);
}

bool SharedFile::Lock(std::uint64_t place, bool alone) const {
    return SetLock(m_file, static_cast<short>(alone ? F_WRLCK : F_RDLCK), place);
}

void SharedFile::Unlock(std::uint64_t place) const {
    SetLock(m_file, F_UNLCK, place);
}

bool SharedFile::LockedElsewhere(std::uint64_t place) const {
    struct flock lock = OnePlace(F_WRLCK, place);
    return ::fcntl(m_file.Descriptor(), F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

std::vector<std::string> SharedFileNames() {
    const std::string start = NameStart();
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(kSharedFolder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name.starts_with(start)) {
            names.push_back(name.substr(start.size()));
        }
    }
    return names;
}

}  // namespace Korvex3Sync::os
