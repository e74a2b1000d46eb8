#include "support/Environment.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <io.h>

#include <cstdio>
#include <cstdlib>
#include <random>
#include <ranges>
#include <system_error>
#include <utility>

#include "platform/os/FileName.h"
#include "platform/os/windows/System.h"

namespace Korvex3Sync::tests {

namespace fs = std::filesystem;

void SetVariable(const std::string& name, const std::string& value) {
    // An empty value would remove the variable.
    EXPECT_FALSE(value.empty()) << name;
    EXPECT_EQ(::_wputenv_s(os::Wide(name).c_str(), os::Wide(value).c_str()), 0);
}

void RemoveVariable(const std::string& name) {
    ::_wputenv_s(os::Wide(name).c_str(), L"");
}

void CaptureLines() {
    // How GoogleTest opens its file. Another thread may print before anything could be changed
    // after.
    const int usual = std::exchange(_fmode, _O_BINARY);
    testing::internal::CaptureStdout();
    _fmode = usual;
}

fs::path NewFolder(const std::string& beginning) {
    std::random_device random;
    while (true) {
        fs::path path =
            fs::temp_directory_path() / os::PathOf(beginning + std::to_string(random()));
        std::error_code error;
        if (fs::create_directory(path, error) || error) {
            EXPECT_FALSE(error) << path;
            return path;
        }
    }
}

// A file that is removed while it is open may keep its place in the folder until it is closed. So
// the folder is not empty, and remove_all would begin again and again.
void RemoveFolder(const fs::path& folder) {
    std::error_code ignored;
    std::vector<fs::path> paths{folder};
    for (fs::recursive_directory_iterator entry(folder, ignored), end; entry != end;
         entry.increment(ignored)) {
        paths.push_back(entry->path());
    }
    // What a folder contains comes after it.
    for (const fs::path& path : std::views::reverse(paths)) {
        fs::remove(path, ignored);
    }
}

std::string NothingFile() {
    return "NUL";
}

// The libraries are found by the search path.
void LinkProgram(const fs::path& program, const fs::path& name) {
    fs::copy_file(program, name);
}

std::vector<std::pair<std::string, std::string>> FoldersIn(const fs::path& home) {
    return {{"LOCALAPPDATA", home.string()}};
}

fs::path RuntimeFolderIn(const fs::path& home) {
    return home / "korvex3sync" / "run";
}

fs::path LogFolderIn(const fs::path& home) {
    return home / "korvex3sync" / "log";
}

fs::path SharedMemoryFile(const std::string& /*name*/) {
    return {};
}

}  // namespace Korvex3Sync::tests
