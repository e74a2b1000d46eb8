#pragma once

#include <array>
#include <string>
#include <vector>

#include "korvexctl/pictures/KeptImageSet.h"
#include "korvexctl/pictures/Picture.h"

namespace Korvex3Sync::korvexctl {

/// One picture for an overview of a scan: a row for each set with its left, right and colour image
/// side by side, scaled down, and above them its number, key and time and how many triggers were
/// lost since the row before. The mono images are brightened, as a screen needs it. Keeps only the
/// small pictures. One thread.
class ContactSheet {
public:
    /// Adds a row; `pictures` are those of the set: left, right and, with colour, the colour
    /// picture, all of one size.
    void Add(const KeptImageSet& set, const std::vector<Picture>& pictures);
    bool Empty() const { return m_rows.empty(); }
    /// The sheet, in colour, with these lines on top, which are broken where they are too long;
    /// without its third column when no row has a colour picture. Not for an empty one.
    Picture Compose(const std::vector<std::string>& header) const;

private:
    struct Row {
        std::string label;
        std::vector<Picture> cells;
    };

    std::vector<Row> m_rows;
    int m_lost = 0;  // triggers without a set, up to the last row
};

}  // namespace Korvex3Sync::korvexctl
