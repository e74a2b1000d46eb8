#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "project/SourceTree.h"

namespace Korvex3Sync::tests {

/// The path prefixes that each room may include in addition to its own, by the prefix of the room.
std::map<std::string, std::set<std::string>> IncludeTable();

/// Every include of the tree that the table does not allow, as "FILE:LINE: must not include
/// TARGET".
std::vector<std::string> ForbiddenIncludes(const SourceTree& tree);

/// Every include that is part of a cycle between folders, as "FILE:LINE: FOLDER and INCLUDED FOLDER
/// need each other".
std::vector<std::string> FolderCycles(const SourceTree& tree);

/// Every preprocessor condition on an operating system or compiler outside the rooms that may have
/// one, as "FILE:LINE: the condition".
std::vector<std::string> PlatformConditions(const SourceTree& tree);

}  // namespace Korvex3Sync::tests
