#include "korvexctl/service/ServicePrograms.h"

#include <algorithm>
#include <fstream>

#include "korvexctl/cli/ExitCodes.h"
#include "platform/os/InstanceLock.h"
#include "platform/os/LogFiles.h"
#include "platform/os/UserFolders.h"

namespace Korvex3Sync::korvexctl {

namespace {

namespace fs = std::filesystem;

fs::path UserFolder(fs::path (*find)(std::string& reason)) {
    std::string reason;
    fs::path folder = find(reason);
    if (folder.empty()) {
        throw CommandError(ExitCode::ServiceFailed, reason);
    }
    return folder;
}

}  // namespace

long ProcessOf(const ServiceProgram& program) {
    return os::InstanceLockHolder(UserFolder(os::RuntimeFolder) / program.lockFile);
}

fs::path ServiceLogFolder() {
    return UserFolder(os::LogFolder);
}

fs::path NewestLogOf(const ServiceProgram& program) {
    return os::NewestLogFile(ServiceLogFolder(), program.log);
}

std::vector<std::string> LastLines(const fs::path& file, std::size_t most) {
    constexpr std::streamoff kLookedAt = 1 << 20;
    std::ifstream stream(file, std::ios::binary | std::ios::ate);
    const std::streamoff size = stream.tellg();
    if (size > kLookedAt) {
        // The first line may be a part of one.
        stream.seekg(size - kLookedAt);
        std::string part;
        std::getline(stream, part);
    } else {
        stream.seekg(0);
    }
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(std::move(line));
    }
    lines.erase(lines.begin(),
                lines.end() - static_cast<std::ptrdiff_t>(std::min(most, lines.size())));
    return lines;
}

}  // namespace Korvex3Sync::korvexctl
