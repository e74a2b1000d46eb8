#include "korvexctl/service/ServicePrograms.h"

#include <algorithm>
#include <fstream>

#include "korvexctl/cli/ExitCodes.h"
#include "platform/link/HubOperations.h"
#include "platform/os/InstanceLock.h"
#include "platform/os/LogFiles.h"
#include "platform/os/UserFolders.h"

namespace Korvex3Sync::korvexctl {

namespace {

namespace fs = std::filesystem;

/// What `find` finds.
template <class Find>
fs::path UserPath(Find find) {
    std::string reason;
    fs::path path = find(reason);
    if (path.empty()) {
        throw CommandError(ExitCode::ServiceFailed, reason);
    }
    return path;
}

}  // namespace

long ProcessOf(const ServiceProgram& program) {
    const fs::path folder = UserPath(os::RuntimeFolder);
    // The programs could say only in their logs that a socket cannot have so long a path. The other
    // name is shorter.
    UserPath([](std::string& reason) { return os::SocketPath(link::kServiceSocket, reason); });
    return os::InstanceLockHolder(folder / program.lockFile);
}

fs::path ServiceLogFolder() {
    return UserPath(os::LogFolder);
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
        // On Windows, lines of a log end with two characters.
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        lines.push_back(std::move(line));
    }
    lines.erase(lines.begin(),
                lines.end() - static_cast<std::ptrdiff_t>(std::min(most, lines.size())));
    return lines;
}

}  // namespace Korvex3Sync::korvexctl
