#pragma once

#include <set>
#include <string>

namespace Korvex3Sync::tests {

/// The functions that the public headers declare: a name as often as there are functions of it.
std::multiset<std::string> DeclaredFunctions();

}  // namespace Korvex3Sync::tests
