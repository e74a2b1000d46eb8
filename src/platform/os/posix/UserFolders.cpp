#include "platform/os/UserFolders.h"

#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>

#include "platform/os/Environment.h"

namespace Korvex3Sync::os {
namespace {

constexpr const char* kFolderName = "korvex3sync";

/// The value of a variable that names a folder; a relative path counts as not set.
std::filesystem::path FolderVariable(const char* name) {
    std::filesystem::path folder = Variable(name).value_or("");
    return folder.is_absolute() ? folder : std::filesystem::path();
}

std::string ErrorText(int error) {
    return std::generic_category().message(error);
}

/// What makes a folder unfit to keep sockets in; empty if nothing does.
std::string Objection(const std::filesystem::path& folder) {
    struct stat status {};
    if (::lstat(folder.c_str(), &status) != 0) {
        return ErrorText(errno);
    }
    if (S_ISLNK(status.st_mode)) {
        return "it is a symbolic link";
    }
    if (!S_ISDIR(status.st_mode)) {
        return "it is not a folder";
    }
    if (status.st_uid != ::geteuid()) {
        return "it belongs to another user";
    }
    if ((status.st_mode & 077U) != 0) {
        char mode[8];
        std::snprintf(mode, sizeof(mode), "%04o", status.st_mode & 07777U);
        return std::string("other users can enter it (mode ") + mode + "; it must be 0700)";
    }
    return "";
}

}  // namespace

std::filesystem::path RuntimeFolder(std::string& reason) {
    const std::filesystem::path variable = FolderVariable("XDG_RUNTIME_DIR");
    std::filesystem::path folder = variable.empty()
                                       ? std::filesystem::path(std::string("/tmp/") + kFolderName +
                                                               "-" + std::to_string(::geteuid()))
                                       : variable / kFolderName;
    if (::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
        reason = "cannot create " + folder.string() + ": " + ErrorText(errno);
        return {};
    }
    const std::string objection = Objection(folder);
    if (!objection.empty()) {
        reason = "cannot use " + folder.string() + ": " + objection;
        return {};
    }
    return folder;
}

std::filesystem::path SocketPath(std::string_view name, std::string& reason) {
    const std::filesystem::path folder = RuntimeFolder(reason);
    if (folder.empty()) {
        return {};
    }
    std::filesystem::path path = folder / name;
    // A socket is created under a temporary name that is a few characters longer.
    constexpr std::size_t kMost = sizeof(sockaddr_un::sun_path) - 10;
    if (path.native().size() > kMost) {
        reason = "the socket path " + path.string() + " is longer than " + std::to_string(kMost) +
                 " characters; set XDG_RUNTIME_DIR to a shorter path";
        return {};
    }
    return path;
}

bool SocketInPlace(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::exists(path, error);
}

std::filesystem::path LogFolder(std::string& reason) {
    std::filesystem::path base = FolderVariable("XDG_STATE_HOME");
    if (base.empty() && !FolderVariable("HOME").empty()) {
        base = FolderVariable("HOME") / ".local/state";
    }
    if (!base.empty()) {
        std::filesystem::path folder = base / kFolderName;
        std::error_code error;
        std::filesystem::create_directories(folder, error);
        if (!error && ::access(folder.c_str(), W_OK | X_OK) == 0) {
            return folder;
        }
    }
    return RuntimeFolder(reason);
}

}  // namespace Korvex3Sync::os
