#include "platform/os/File.h"

#include <utility>

#include "platform/os/Descriptors.h"

namespace Korvex3Sync::os {

File::File(File&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}

File& File::operator=(File&& other) noexcept {
    std::swap(m_descriptor, other.m_descriptor);
    return *this;
}

std::error_code File::Write(std::string_view bytes) const noexcept {
    while (!bytes.empty()) {
        const std::ptrdiff_t written = WriteDescriptor(m_descriptor, bytes.data(), bytes.size());
        if (written <= 0) {
            return LastError();
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return {};
}

std::error_code File::Close() noexcept {
    const int descriptor = std::exchange(m_descriptor, -1);
    return descriptor < 0 || CloseDescriptor(descriptor) ? std::error_code{} : LastError();
}

}  // namespace Korvex3Sync::os
