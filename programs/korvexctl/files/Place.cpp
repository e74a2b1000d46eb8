#include "korvexctl/files/Place.h"

#include <chrono>

#include "korvexctl/files/FileError.h"
#include "platform/os/Clock.h"

namespace Korvex3Sync::korvexctl {

namespace {

namespace fs = std::filesystem;

/// As many links in a row as the system follows.
constexpr int kMostLinks = 40;
constexpr std::chrono::milliseconds kReaderPoll{20};
constexpr int kReaderPolls = 250;  // 5 s

/// Follows links, also one that leads to nothing yet, as far as a descriptor of this process.
fs::path Follow(fs::path path) {
    std::error_code error;
    for (int i = 0; i < kMostLinks && fs::is_symlink(path, error) && !os::IsNamedStream(path);
         ++i) {
        const fs::path target = fs::read_symlink(path, error);
        if (error) {
            break;
        }
        path = path.parent_path() / target;
    }
    return path;
}

}  // namespace

Place FindPlace(const fs::path& asked, const std::string& what) {
    const fs::path path = Follow(asked);
    if (os::IsNamedStream(path)) {
        return {Place::Kind::Stream, path};
    }
    std::error_code error;
    const fs::file_type type = fs::status(path, error).type();
    if (error && error != std::errc::no_such_file_or_directory) {
        throw FileError(what, error);
    }
    switch (type) {
        case fs::file_type::not_found:
            return {Place::Kind::Free, path};
        case fs::file_type::regular:
            return {Place::Kind::File, path};
        case fs::file_type::fifo:
        case fs::file_type::character:
            return {Place::Kind::Stream, path};
        case fs::file_type::directory:
            throw FileError(what, std::make_error_code(std::errc::is_a_directory));
        default:
            throw CommandError(ExitCode::NotWritable,
                               what + ": neither a file nor a FIFO nor a character device");
    }
}

os::File OpenStream(const Place& place, const std::string& what) {
    std::error_code error;
    for (int polls = 0;; ++polls) {
        os::File stream = os::OpenStream(place.path, error);
        if (stream) {
            return stream;
        }
        if (error != std::errc::no_such_device_or_address) {
            throw FileError(what, error);
        }
        if (polls == kReaderPolls) {
            throw CommandError(ExitCode::NotWritable, what + ": the pipe has no reader");
        }
        os::SleepFor(kReaderPoll);
    }
}

void RequireWritableStream(const Place& place, const std::string& what) {
    const std::error_code error = os::CheckStreamAccess(place.path);
    if (error == std::errc::bad_file_descriptor) {
        throw CommandError(ExitCode::NotWritable, what + ": it is open for reading only");
    }
    RequireWritten(error, what);
}

}  // namespace Korvex3Sync::korvexctl
