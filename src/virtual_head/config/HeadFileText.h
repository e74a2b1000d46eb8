#pragma once

#include <string>

#include "virtual_head/base/Export.h"

namespace Korvex3Sync::virtual_head {

/// The text of a head file with every key at its default, each with its meaning, unit and range in
/// a comment. A key without a default appears as an example that is commented out. The text ends
/// with a newline. It is generated from the same rules that check a head file.
KORVEX_VIRTUAL_HEAD_API std::string HeadFileText();

}  // namespace Korvex3Sync::virtual_head
