#include "project/SourceTree.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace Korvex3Sync::tests {

namespace fs = std::filesystem;

namespace {

const fs::path kRoot = KORVEX_SOURCE_DIR;

bool IsCpp(const fs::path& file) {
    return file.extension() == ".h" || file.extension() == ".cpp" || file.extension() == ".in";
}

}  // namespace

std::string ReadProjectFile(const std::string& path) {
    std::ifstream file(kRoot / path, std::ios::binary);
    EXPECT_TRUE(file.is_open()) << path << " cannot be read";
    return {std::istreambuf_iterator<char>(file), {}};
}

SourceTree ReadSourceTree(const std::vector<std::string>& folders) {
    SourceTree tree;
    for (const std::string& folder : folders) {
        if (!fs::is_directory(kRoot / folder)) {
            continue;
        }
        for (const auto& entry : fs::recursive_directory_iterator(kRoot / folder)) {
            if (entry.is_regular_file() && IsCpp(entry.path())) {
                const std::string path = fs::relative(entry.path(), kRoot).generic_string();
                tree[path] = ReadProjectFile(path);
            }
        }
    }
    return tree;
}

}  // namespace Korvex3Sync::tests
