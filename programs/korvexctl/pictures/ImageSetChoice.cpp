#include "korvexctl/pictures/ImageSetChoice.h"

#include <algorithm>
#include <map>

namespace Korvex3Sync::korvexctl {

namespace {

/// The number of the i-th of `count` sets that are spread over `sets`.
int Spread(int i, int count, int sets) {
    return static_cast<int>(static_cast<long long>(i) * sets / count);
}

}  // namespace

std::vector<ChosenImageSet> ChooseImageSets(int sets, int keep, int rows) {
    std::map<int, ChosenImageSet> chosen;
    keep = std::min(keep, sets);
    rows = std::min(rows, sets);
    for (int i = 0; i < keep; ++i) {
        chosen[Spread(i, keep, sets)].pictures = true;
    }
    for (int i = 0; i < rows; ++i) {
        chosen[Spread(i, rows, sets)].sheet = true;
    }
    std::vector<ChosenImageSet> list;
    list.reserve(chosen.size());
    for (auto& [number, set] : chosen) {
        set.number = number;
        list.push_back(set);
    }
    return list;
}

}  // namespace Korvex3Sync::korvexctl
