#pragma once

#include <string>

#include "virtual_head/base/Export.h"

namespace Korvex3Sync::virtual_head {

/// The text of a head file with every key of the virtual head at its default, each with its
/// meaning, unit and range in a comment. A key without a default stands there as an example that a
/// # right before it switches off. The text ends with a line end. Written from the rules that are
/// checked.
KORVEX_VIRTUAL_HEAD_API std::string HeadFileText();

}  // namespace Korvex3Sync::virtual_head
