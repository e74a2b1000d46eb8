#include "korvexctl/files/OpenedFile.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace Korvex3Sync::korvexctl {

bool WriteAll(int descriptor, std::string_view text) noexcept {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written <= 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

OpenedFile& OpenedFile::operator=(OpenedFile&& other) noexcept {
    if (this != &other) {
        Close();
        m_descriptor = other.Release();
    }
    return *this;
}

int OpenedFile::Release() noexcept {
    return std::exchange(m_descriptor, -1);
}

bool OpenedFile::Close() noexcept {
    const int descriptor = Release();
    return descriptor < 0 || ::close(descriptor) == 0;
}

}  // namespace Korvex3Sync::korvexctl
