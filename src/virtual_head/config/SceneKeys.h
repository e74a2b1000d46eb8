#pragma once

#include <toml++/toml.h>

#include <optional>
#include <string>

#include "virtual_head/config/SceneDescription.h"

namespace Korvex3Sync::virtual_head {

/// What reading a key of [scene] gave.
struct SceneKeyRead {
    bool known = false;                // [scene] has such a key
    std::optional<std::string> wrong;  // what is wrong with its value, one line
};

/// Takes one key of the table [scene] over. Numbers may be whole; places are arrays of three.
SceneKeyRead ReadSceneKey(const std::string& key, const toml::node& value, SceneDescription& scene);

}  // namespace Korvex3Sync::virtual_head
