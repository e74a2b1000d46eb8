#include "korvexctl/files/FileError.h"

#include <cerrno>
#include <system_error>

namespace Korvex3Sync::korvexctl {

FileError::FileError(const std::string& what, int error)
    : CommandError(CodeOf(error), (CodeOf(error) == ExitCode::DiskFull ? "disk full: " : "") +
                                      what + ": " + std::generic_category().message(error)) {}

ExitCode FileError::CodeOf(int error) {
    return error == ENOSPC || error == EDQUOT || error == EFBIG ? ExitCode::DiskFull
                                                                : ExitCode::NotWritable;
}

}  // namespace Korvex3Sync::korvexctl
