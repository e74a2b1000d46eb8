#pragma once

#include <array>
#include <string>
#include <vector>

#include "korvexctl/pictures/KeptImageSet.h"
#include "korvexctl/pictures/Picture.h"

namespace Korvex3Sync::korvexctl {

/// How many sets a contact sheet shows at most.
inline constexpr int kSheetRows = 8;

/// One picture for an overview of a scan: a row for each set with its left, right and colour image
/// side by side, scaled down, and its number, key and time above. Keeps only the small pictures.
/// One thread.
class ContactSheet {
public:
    /// Adds a row; `pictures` are those of the set: left, right and, with colour, the colour
    /// picture, all of one size.
    void Add(const KeptImageSet& set, const std::vector<Picture>& pictures);
    bool Empty() const { return m_rows.empty(); }
    /// The sheet, in colour; without its third column when no row has a colour picture. Not for an
    /// empty one.
    Picture Compose() const;

private:
    struct Row {
        std::string label;
        std::vector<Picture> cells;
    };

    std::vector<Row> m_rows;
};

}  // namespace Korvex3Sync::korvexctl
