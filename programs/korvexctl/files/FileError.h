#pragma once

#include <string>

#include "korvexctl/cli/ExitCodes.h"

namespace Korvex3Sync::korvexctl {

/// A file that could not be written. A full disk, a used-up quota and a file size limit are told
/// apart from everything else: there the remedy is room.
class FileError : public CommandError {
public:
    /// `what` says what was tried ("cannot write X"), `error` is the errno of the failure.
    FileError(const std::string& what, int error);

    /// The exit code that an errno of a write stands for: DiskFull or NotWritable.
    static ExitCode CodeOf(int error);
};

}  // namespace Korvex3Sync::korvexctl
