#include "support/Environment.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <system_error>

namespace Korvex3Sync::tests {

namespace fs = std::filesystem;

void SetVariable(const std::string& name, const std::string& value) {
    ::setenv(name.c_str(), value.c_str(), 1);
}

void RemoveVariable(const std::string& name) {
    ::unsetenv(name.c_str());
}

void CaptureLines() {
    testing::internal::CaptureStdout();
}

fs::path NewFolder(const std::string& beginning) {
    std::string path = "/tmp/" + beginning + "XXXXXX";
    EXPECT_NE(::mkdtemp(path.data()), nullptr);
    return path;
}

void RemoveFolder(const fs::path& folder) {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
}

std::string NothingFile() {
    return "/dev/null";
}

void LinkProgram(const fs::path& program, const fs::path& name) {
    fs::create_symlink(program, name);
}

std::vector<std::pair<std::string, std::string>> FoldersIn(const fs::path& home) {
    return {{"XDG_RUNTIME_DIR", (home / "r").string()}, {"XDG_STATE_HOME", (home / "s").string()}};
}

fs::path RuntimeFolderIn(const fs::path& home) {
    return home / "r" / "korvex3sync";
}

fs::path LogFolderIn(const fs::path& home) {
    return home / "s" / "korvex3sync";
}

fs::path SharedMemoryFile(const std::string& name) {
    return "/dev/shm/korvex3sync-" + std::to_string(::geteuid()) + "-" + name;
}

}  // namespace Korvex3Sync::tests
