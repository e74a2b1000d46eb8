#include "virtual_head/base/FileBytes.h"

#include <fstream>
#include <iterator>
#include <system_error>

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
    std::ifstream stream(file, std::ios::binary);
    // The stream buffer reports a read error of the system only with an exception.
    stream.exceptions(std::ios::badbit);
    try {
        if (stream) {
            std::string bytes{std::istreambuf_iterator<char>(stream), {}};
            return bytes;
        }
    } catch (const std::ios_base::failure&) {
        return "cannot be read";
    }
    return "cannot be read";
}

}  // namespace Korvex3Sync::virtual_head
