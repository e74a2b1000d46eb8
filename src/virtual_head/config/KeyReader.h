#pragma once

#include <toml++/toml.h>

#include <filesystem>
#include <optional>
#include <string>

#include "virtual_head/config/HeadRules.h"

namespace Korvex3Sync::virtual_head {

/// Copies the value of a key to the description. If it has the wrong type or violates its rule,
/// returns what is wrong, without the key. A floating-point value may be written as an integer. A
/// relative path is relative to `folder`.
std::optional<std::string> ReadValue(const KeyRule& rule, const toml::node& value,
                                     const std::filesystem::path& folder,
                                     HeadDescription& description);

}  // namespace Korvex3Sync::virtual_head
