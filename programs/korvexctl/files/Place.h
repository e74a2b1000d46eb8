#pragma once

#include <filesystem>
#include <string>

#include "platform/os/File.h"

namespace Korvex3Sync::korvexctl {

/// What is at the path where something is to be written.
struct Place {
    enum class Kind {
        Free,    ///< nothing yet
        File,    ///< a regular file
        Stream,  ///< a FIFO, a character device or an open descriptor (/dev/stdout)
    };

    Kind kind = Kind::Free;
    std::filesystem::path path;  ///< after following links
};

/// Examines a path, follows links and changes nothing. Throws CommandError for a folder and for
/// anything else that cannot be written; its text begins with `what` ("cannot write X").
Place FindPlace(const std::filesystem::path& asked, const std::string& what);

/// Opens a stream for writing. Waits a few seconds for the reader of a FIFO. Throws CommandError.
os::File OpenStream(const Place& place, const std::string& what);

/// Throws CommandError for a stream that this user may not write. Does not wait for a reader.
void RequireWritableStream(const Place& place, const std::string& what);

}  // namespace Korvex3Sync::korvexctl
