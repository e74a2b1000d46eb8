#include "platform/os/InstanceLock.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <charconv>
#include <string>
#include <utility>

#include "platform/os/Descriptors.h"
#include "platform/os/Process.h"

namespace Korvex3Sync::os {

namespace {

constexpr mode_t kLockFileMode = 0600;

/// The whole file, whatever its length.
struct flock WholeFile() {
    struct flock range {};
    range.l_type = F_WRLCK;
    range.l_whence = SEEK_SET;
    return range;
}

}  // namespace

File TakeInstanceLock(const std::filesystem::path& file, std::error_code& error) {
    File lock(::open(file.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC, kLockFileMode));
    struct flock range = WholeFile();
    const bool locked = lock && ::fcntl(lock.Descriptor(), F_OFD_SETLK, &range) == 0 &&
                        ::ftruncate(lock.Descriptor(), 0) == 0;
    error = locked ? std::error_code{} : LastError();
    if (!error) {
        error = lock.Write(std::to_string(CurrentProcess()) + '\n');
    }
    return error ? File() : std::move(lock);
}

long InstanceLockHolder(const std::filesystem::path& file) {
    const File lock(::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct flock range = WholeFile();
    // A lock for reading can be asked about through a descriptor for reading; asking takes none.
    range.l_type = F_RDLCK;
    if (!lock || ::fcntl(lock.Descriptor(), F_OFD_GETLK, &range) != 0 || range.l_type == F_UNLCK) {
        return 0;
    }
    constexpr std::size_t kLongestNumber = 20;
    std::array<char, kLongestNumber> text{};
    const ssize_t size = ::pread(lock.Descriptor(), text.data(), text.size(), 0);
    long number = 0;
    if (size > 0) {
        std::from_chars(text.data(), text.data() + size, number);
    }
    return number;
}

}  // namespace Korvex3Sync::os
