#pragma once

#include <cstddef>

namespace Korvex3Sync::tests {

/// Pixels of one image of the frames that tests push where the size does not matter.
inline constexpr std::size_t kPixels = 32;

}  // namespace Korvex3Sync::tests
