#include "platform/os/Descriptors.h"

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <limits>

#include "platform/os/windows/System.h"

namespace Korvex3Sync::os {

namespace {

constexpr int kLastStandardDescriptor = 2;
constexpr unsigned kPipeBytes = 65536;

DWORD AtMost(std::size_t count) {
    return static_cast<DWORD>(
        std::min<std::size_t>(count, std::numeric_limits<std::int32_t>::max()));
}

}  // namespace

std::error_code LastError() {
    return SystemError(::GetLastError());
}

int DuplicateDescriptor(int descriptor) {
    const int copy = ::_dup(descriptor);
    if (copy < 0) {
        return copy;
    }
    if (copy <= kLastStandardDescriptor) {
        const int higher = DuplicateDescriptor(descriptor);
        ::_close(copy);
        return higher;
    }
    ::SetHandleInformation(HandleOf(copy), HANDLE_FLAG_INHERIT, 0);
    return copy;
}

bool RedirectDescriptor(int source, int descriptor) {
    return ::_dup2(source, descriptor) == 0;
}

int OpenNothing() {
    return ::_open("NUL", _O_RDWR | _O_BINARY | _O_NOINHERIT);
}

bool MakePipe(std::array<int, 2>& ends) {
    return ::_pipe(ends.data(), kPipeBytes, _O_BINARY | _O_NOINHERIT) == 0;
}

// The system's functions instead of those of the C runtime: they leave the system's error code, and
// the bytes as they are.

std::ptrdiff_t ReadDescriptor(int descriptor, char* bytes, std::size_t most) {
    DWORD count = 0;
    if (::ReadFile(HandleOf(descriptor), bytes, AtMost(most), &count, nullptr) == 0) {
        const DWORD error = ::GetLastError();
        return error == ERROR_BROKEN_PIPE || error == ERROR_HANDLE_EOF ? 0 : -1;
    }
    return static_cast<std::ptrdiff_t>(count);
}

std::ptrdiff_t WriteDescriptor(int descriptor, const char* bytes, std::size_t count) {
    DWORD written = 0;
    if (::WriteFile(HandleOf(descriptor), bytes, AtMost(count), &written, nullptr) == 0) {
        return -1;
    }
    return static_cast<std::ptrdiff_t>(written);
}

bool CloseDescriptor(int descriptor) {
    return ::_close(descriptor) == 0;
}

}  // namespace Korvex3Sync::os
