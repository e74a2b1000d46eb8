#pragma once

#include <cstddef>
#include <vector>

#include "korvexctl/pictures/Picture.h"

namespace Korvex3Sync::tests {

/// Red, green and blue of one pixel of a colour picture.
inline std::vector<int> PixelAt(const korvexctl::Picture& picture, int x, int y) {
    const auto first = static_cast<std::size_t>((y * picture.width + x) * 3);
    return {picture.bytes[first], picture.bytes[first + 1], picture.bytes[first + 2]};
}

}  // namespace Korvex3Sync::tests
