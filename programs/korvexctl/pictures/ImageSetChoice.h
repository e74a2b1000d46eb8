#pragma once

#include <vector>

namespace Korvex3Sync::korvexctl {

/// A set of the scan to keep, and why.
struct ChosenImageSet {
    int number = 0;         // in the scan, from 0
    bool pictures = false;  // as PNG files
    bool sheet = false;     // as a row of the contact sheet
};

/// Chooses `keep` sets for pictures and `rows` for the contact sheet, each evenly spread over a
/// scan of `sets` and none more than once; in the order of their numbers.
std::vector<ChosenImageSet> ChooseImageSets(int sets, int keep, int rows);

}  // namespace Korvex3Sync::korvexctl
