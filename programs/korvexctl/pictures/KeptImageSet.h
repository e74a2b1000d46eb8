#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "korvexctl/pictures/ImageSetChoice.h"

namespace Korvex3Sync::korvexctl {

/// A copy of one image set, in a buffer that is reused for later sets.
struct KeptImageSet {
    ChosenImageSet chosen;
    int key = 0;         // 0 to 255: the trigger number modulo 256
    double seconds = 0;  // from the arrival of the first set to that of this one
    int width = 0;       // pixels
    int height = 0;      // pixels
    bool color = false;  // the third image is there
    std::array<std::vector<std::uint8_t>, 3> images;  // left, right, colour mosaic
};

}  // namespace Korvex3Sync::korvexctl
