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
    std::filesystem::path path;  ///< where the links lead
};

/// Looks, links followed, and touches nothing. Throws CommandError for a folder and for whatever
/// else cannot be written; `what` says what is tried ("cannot write X").
Place FindPlace(const std::filesystem::path& asked, const std::string& what);

/// Opens a stream for writing. Waits a few seconds for the reader of a FIFO. Throws CommandError.
os::File OpenStream(const Place& place, const std::string& what);

/// Throws CommandError for a stream that this user may not write; waits for nobody.
void RequireWritableStream(const Place& place, const std::string& what);

}  // namespace Korvex3Sync::korvexctl
