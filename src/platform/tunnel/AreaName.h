#pragma once

#include <string>

namespace Korvex3Sync::tunnel {

/// The name of the shared file of an area. Processes of one user with different runtime folders
/// never meet. Empty, with a reason, if the area's name is not 1 to 100 letters, digits, '_', '-'
/// or
/// '.', or if the user has no runtime folder.
std::string SharedNameOf(const std::string& area, std::string& reason);

}  // namespace Korvex3Sync::tunnel
