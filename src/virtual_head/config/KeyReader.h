#pragma once

#include <toml++/toml.h>

#include <filesystem>
#include <optional>
#include <string>

#include "virtual_head/config/HeadRules.h"

namespace Korvex3Sync::virtual_head {

/// Takes the value of one key over into the description. Says what is wrong with it, without the
/// key, when it has the wrong type or breaks its rule. A number with a fraction may be written
/// without one. A relative path begins in `folder`.
std::optional<std::string> ReadValue(const KeyRule& rule, const toml::node& value,
                                     const std::filesystem::path& folder,
                                     HeadDescription& description);

}  // namespace Korvex3Sync::virtual_head
