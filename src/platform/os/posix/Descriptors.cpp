#include "platform/os/Descriptors.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace Korvex3Sync::os {

std::error_code LastError() {
    return {errno, std::generic_category()};
}

int DuplicateDescriptor(int descriptor) {
    return ::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
}

bool RedirectDescriptor(int source, int descriptor) {
    return ::dup2(source, descriptor) >= 0;
}

int OpenNothing() {
    return ::open("/dev/null", O_RDWR | O_CLOEXEC);
}

bool MakePipe(std::array<int, 2>& ends) {
    return ::pipe2(ends.data(), O_CLOEXEC) == 0;
}

std::ptrdiff_t ReadDescriptor(int descriptor, char* bytes, std::size_t most) {
    std::ptrdiff_t count = 0;
    do {
        count = ::read(descriptor, bytes, most);
    } while (count < 0 && errno == EINTR);
    return count;
}

std::ptrdiff_t WriteDescriptor(int descriptor, const char* bytes, std::size_t count) {
    std::ptrdiff_t written = 0;
    do {
        written = ::write(descriptor, bytes, count);
    } while (written < 0 && errno == EINTR);
    return written;
}

bool CloseDescriptor(int descriptor) {
    return ::close(descriptor) == 0;
}

}  // namespace Korvex3Sync::os
