#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace Korvex3Sync::tests {

/// Text by path, relative to the root of the project, with '/'.
using SourceTree = std::map<std::string, std::string>;

/// The C++ files below the given folders of the project. A folder that is missing is empty.
SourceTree ReadSourceTree(const std::vector<std::string>& folders);

/// The text of one file of the project; fails the test when it cannot be read.
std::string ReadProjectFile(const std::string& path);

}  // namespace Korvex3Sync::tests
