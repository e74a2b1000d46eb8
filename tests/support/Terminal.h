#pragma once

#include <string>
#include <vector>

namespace Korvex3Sync::tests {

/// The command that runs a command on a terminal of its own and prints what is shown there. It ends
/// as that command does. Its words contain no apostrophes.
std::vector<std::string> OnTerminal(const std::vector<std::string>& command);

}  // namespace Korvex3Sync::tests
