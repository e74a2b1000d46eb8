#include "korvexctl/files/FolderLock.h"

#include "korvexctl/cli/ExitCodes.h"
#include "platform/os/FileName.h"

namespace Korvex3Sync::korvexctl {

FolderLock::FolderLock(const std::filesystem::path& folder) {
    std::error_code error;
    m_folder = os::LockFolder(folder, error);
    if (error == std::errc::resource_unavailable_try_again) {
        throw CommandError(ExitCode::NotWritable,
                           "cannot write in the folder " + os::TextOf(folder) +
                               ": another scan is writing into it; wait for its end, or choose "
                               "another folder");
    }
}

}  // namespace Korvex3Sync::korvexctl
