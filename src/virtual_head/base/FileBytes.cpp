#include "virtual_head/base/FileBytes.h"

#include <system_error>

#include "platform/os/File.h"

namespace Korvex3Sync::virtual_head {

std::variant<std::string, const char*> ReadFileBytes(const std::filesystem::path& file,
                                                     std::uintmax_t most) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(file, error);
    if (!std::filesystem::exists(status)) {
        return error && status.type() == std::filesystem::file_type::none ? "cannot be examined"
                                                                          : "no such file";
    }
    if (std::filesystem::is_directory(status)) {
        return "is a folder, not a file";
    }
    if (!std::filesystem::is_regular_file(status)) {
        return "is not a regular file";
    }
    if (std::filesystem::file_size(file, error) > most || error) {
        return error ? "cannot be examined" : "is too large";
    }
    // The size of a file of the system, as in /proc, says nothing.
    std::string bytes = os::ReadWithoutWaiting(file, most + 1, error);
    if (error) {
        return "cannot be read";
    }
    if (bytes.size() > most) {
        return "is too large";
    }
    return bytes;
}

}  // namespace Korvex3Sync::virtual_head
