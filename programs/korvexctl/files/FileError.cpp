#include "korvexctl/files/FileError.h"

#include "platform/os/File.h"

namespace Korvex3Sync::korvexctl {

FileError::FileError(const std::string& what, const std::error_code& error)
    : CommandError(os::MeansNoRoom(error) ? ExitCode::DiskFull : ExitCode::NotWritable,
                   (os::MeansNoRoom(error) ? "disk full: " : "") + what + ": " + error.message()) {}

void RequireWritten(const std::error_code& error, const std::string& what) {
    if (error) {
        throw FileError(what, error);
    }
}

}  // namespace Korvex3Sync::korvexctl
