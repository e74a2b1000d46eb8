#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "project/SourceTree.h"

namespace Korvex3Sync::tests {

/// The beginnings of paths that each room may include beside its own, by the room's.
std::map<std::string, std::set<std::string>> IncludeTable();

/// Every include of the tree that the arrows between the rooms do not allow, as
/// "FILE:LINE: must not include TARGET".
std::vector<std::string> ForbiddenIncludes(const SourceTree& tree);

/// Every include that is part of a cycle between folders, as "FILE:LINE: FOLDER and INCLUDED FOLDER
/// need each other".
std::vector<std::string> FolderCycles(const SourceTree& tree);

/// Every preprocessor condition on an operating system or compiler outside the rooms that may have
/// one, as "FILE:LINE: the condition".
std::vector<std::string> PlatformConditions(const SourceTree& tree);

}  // namespace Korvex3Sync::tests
