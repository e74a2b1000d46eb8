#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace Korvex3Sync::korvexctl {

/// What a set is kept for.
struct Purpose {
    bool pictures = false;   // files for people
    bool sheet = false;      // a row of the contact sheet
    bool recording = false;  // files for a replay

    bool operator==(const Purpose&) const = default;
};

/// A copy of one image set, in a buffer that is reused for later sets.
struct KeptImageSet {
    Purpose purpose;
    int number = 0;      // in the scan, from 0
    int key = 0;         // 0 to 255: the trigger number modulo 256
    int lost = 0;        // triggers without a set so far, by the keys
    double seconds = 0;  // from the arrival of the first set to that of this one
    int width = 0;       // pixels
    int height = 0;      // pixels
    bool color = false;  // the third image is there
    std::array<std::vector<std::uint8_t>, 3> images;  // left, right, colour mosaic
};

}  // namespace Korvex3Sync::korvexctl
