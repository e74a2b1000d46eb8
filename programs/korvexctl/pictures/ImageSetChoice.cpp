#include "korvexctl/pictures/ImageSetChoice.h"

#include <algorithm>
#include <cmath>

namespace Korvex3Sync::korvexctl {

namespace {

/// The number of the i-th of `count` sets that are spread over `sets`.
int Spread(int i, int count, int sets) {
    return static_cast<int>(static_cast<long long>(i) * sets / count);
}

/// How many of `count` sets that are spread over `sets` have a number up to this one.
int SpreadUpTo(int number, int count, int sets) {
    const long long share = (number + 1LL) * count;
    return static_cast<int>((share + sets - 1) / sets);
}

}  // namespace

ImageSetChoice::ImageSetChoice(int keep, ScanEnd end)
    : m_end(end), m_keep(std::min(keep, end.sets.value_or(keep))) {}

int ImageSetChoice::Due(int number, double seconds) const {
    int due = m_end.sets || m_end.seconds ? 0 : number + 1;
    if (m_end.sets) {
        due = SpreadUpTo(number, m_keep, *m_end.sets);
    }
    if (m_end.seconds) {
        const double share = std::clamp(seconds / *m_end.seconds, 0.0, 1.0);
        due = std::max(due, static_cast<int>(std::floor(share * m_keep)) + 1);
    }
    return std::min({due, m_keep, number + 1});
}

bool ImageSetChoice::OnSheet(int index) const {
    const int rows = std::min(m_keep, kSheetRows);
    for (int row = 0; row < rows; ++row) {
        if (Spread(row, rows, m_keep) == index) {
            return true;
        }
    }
    return false;
}

}  // namespace Korvex3Sync::korvexctl
