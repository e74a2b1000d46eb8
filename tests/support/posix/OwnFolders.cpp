#include "support/OwnFolders.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <string_view>

namespace Korvex3Sync::tests {

namespace {

namespace fs = std::filesystem;

/// Waits for the end of its input, which comes with the end of the test program at the latest; then
/// kills the processes until none is left. A shell, because nothing of a test program with several
/// threads is sound in its forked child.
constexpr const char* kGuard = R"(
cat > /dev/null
while files=$(grep -lzxF "XDG_RUNTIME_DIR=$1/r" /proc/[0-9]*/environ 2>/dev/null); [ "$files" ]; do
    for file in $files; do
        number=${file#/proc/}
        kill -9 "${number%/environ}" 2>/dev/null
    done
done
rm -rf "$1"
)";

std::string RuntimeVariable(const fs::path& path) {
    return "XDG_RUNTIME_DIR=" + (path / "r").string();
}

bool RunsWith(const fs::path& process, const std::string& variable) {
    std::ifstream stream(process / "environ", std::ios::binary);
    for (std::string word; std::getline(stream, word, '\0');) {
        if (word == variable) {
            return true;
        }
    }
    return false;
}

}  // namespace

OwnFolders::OwnFolders() {
    std::array<int, 2> pipe{-1, -1};
    if (::pipe2(pipe.data(), O_CLOEXEC) != 0) {
        ADD_FAILURE() << "no pipe";
        return;
    }
    m_path = NewFolder("kvж-");
    const std::string path = m_path.string();
    fs::create_directory(m_path / "r");
    fs::permissions(m_path / "r", fs::perms::owner_all);
    m_guardEnd = pipe[1];
    m_guard = ::fork();
    if (m_guard == 0) {
        ::setsid();  // Ctrl-C must not end it first
        ::dup2(pipe[0], STDIN_FILENO);
        ::execl("/bin/sh", "sh", "-c", kGuard, "sh", path.c_str(), nullptr);
        ::_exit(127);
    }
    ::close(pipe[0]);
    EXPECT_GT(m_guard, 0);
}

OwnFolders::~OwnFolders() {
    ::close(m_guardEnd);
    while (::waitpid(static_cast<pid_t>(m_guard), nullptr, 0) < 0 && errno == EINTR) {
    }
    EXPECT_TRUE(m_path.empty() || !fs::exists(m_path)) << m_path << " was not removed";
}

std::vector<long> OwnFolders::Processes() const {
    std::vector<long> processes;
    for (const auto& entry : fs::directory_iterator("/proc")) {
        const std::string name = entry.path().filename().string();
        long number = 0;
        const auto [rest, wrong] = std::from_chars(name.data(), name.data() + name.size(), number);
        if (wrong == std::errc() && rest == name.data() + name.size() &&
            RunsWith(entry.path(), RuntimeVariable(m_path))) {
            processes.push_back(number);
        }
    }
    return processes;
}

std::vector<std::string> SharedMemoryObjects() {
    const std::string beginning = "korvex3sync-" + std::to_string(::geteuid()) + '-';
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator("/dev/shm")) {
        if (entry.path().filename().string().starts_with(beginning)) {
            names.push_back(entry.path().filename().string());
        }
    }
    return names;
}

}  // namespace Korvex3Sync::tests
