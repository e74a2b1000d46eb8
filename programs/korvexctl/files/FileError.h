#pragma once

#include <string>
#include <system_error>

#include "korvexctl/cli/ExitCodes.h"

namespace Korvex3Sync::korvexctl {

/// A file that could not be written. DiskFull when room is missing (a full disk, a used-up quota, a
/// limit of file sizes), NotWritable for everything else.
class FileError : public CommandError {
public:
    /// `what` says what was tried ("cannot write X").
    FileError(const std::string& what, const std::error_code& error);
};

/// Throws FileError for an error.
void RequireWritten(const std::error_code& error, const std::string& what);

}  // namespace Korvex3Sync::korvexctl
