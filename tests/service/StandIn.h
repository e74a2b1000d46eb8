#pragma once

#include <cstddef>
#include <filesystem>
#include <string>

namespace Korvex3Sync::tests {

/// What a program does that stands in for the hub or the service, in this order.
struct StandIn {
    std::size_t outputBytes = 0;
    std::size_t errorBytes = 0;
    std::string line;     ///< printed
    std::string journal;  ///< a line there; empty: its name, number, arguments and folder
    bool waits = true;    ///< for the end of its input
};

/// Makes the program.
void WriteStandIn(const std::filesystem::path& program, const std::filesystem::path& journal,
                  const StandIn& does);

/// Makes a script for the system's own interpreter, which writes its name, the number of its
/// arguments and its folder into the journal, and fails.
void WriteScript(const std::filesystem::path& script, const std::filesystem::path& journal);

}  // namespace Korvex3Sync::tests
