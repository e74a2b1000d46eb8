#pragma once

#include <toml++/toml.h>

#include <optional>
#include <string>

#include "virtual_head/config/HeadDescription.h"

namespace Korvex3Sync::virtual_head {

/// An error in the faults of a head file, with its line.
struct WrongFault {
    int line;
    std::string what;
};

/// Reads the array [[fault]] into the description.
std::optional<WrongFault> ReadFaults(const toml::node& faults, HeadDescription& description);
/// Reads the table [faults], which contains the seed.
std::optional<WrongFault> ReadFaultSeed(const toml::node& table, HeadDescription& description);

}  // namespace Korvex3Sync::virtual_head
